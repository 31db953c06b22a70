// A line of text.
#pragma once

#include "BuildingBlocks/BasicGeometries/CBasicGeometry.h"

#include <string>

/// A text in a font, as the document stores it: Mac OS Roman, line breaks included. Its joints are never used.
class CTextBIG : public CBasicGeometry {
public:
    CTextBIG();
    explicit CTextBIG(CTextBIG* source);
    /// Reads the raw record from behind its type code: the common record, size, style (ints), font name, text (each a
    /// 16-bit length and that many bytes).
    explicit CTextBIG(void* raw);
    /// Skips that record. @return false when it is cut short
    static bool SkipRaw(CRawWalk& walk);
    /// Copies font name, text, size and style; place and joints stay.
    CTextBIG& operator=(const CTextBIG& source);

    void SpecifyTextGeometry(const char* text, const char* fontName, int size);
    /// Sets the text; an empty one becomes a blank. (One read from a file may be empty.)
    void SetText(const char* text);
    std::string GetText() const { return mText; }
    const std::string& GetTextReference() const { return mText; }
    const std::string& GetFontName() const { return mFontName; }
    /// Points.
    int GetTextSize() const { return mTextSize; }
    /// Only carried.
    int GetTextStyle() const { return mTextStyle; }

    void* GetParameterAsRaw(void* destination) override;
    int GetParameterRawSize() override;
    void TransferFields(CFieldStream& fields) override;
    /// The text.
    std::string ToString(int unit) override;
    /// The measured size, turned by `angle` about (0, 0); the item offset does not count.
    void CalcBoundingBox(DRect& box, double angle) override;
    /// That box turned by the text's own angle too, at the item offset.
    void CalcPlacedBox(DRect& box, double angle) override;
    /// The item offset.
    CPoint& GetRotationReferencePoint(double angle) override;
    void DefineJoints(const CPoint&, double, const CGradeVector&, int) override {}
    int GetType() const override { return kTextType; }
    /// Common block, 324 size, 325 style (ints), 326 font name (256 bytes, the first its length), 327 text.
    bool Load(FILE* file, int version) override;
    /// Writes a fixed font name instead of the text's own, in a form that reads back without its first letter.
    void Save(FILE* file) override;
    std::unique_ptr<CBasicGeometry> Clone() override { return std::make_unique<CTextBIG>(this); }
    void Scale(double factor, bool scaleOffset) override;

private:
    std::string mText = "TEXT";
    int mTextSize = 24;
    int mTextStyle = 0;
    std::string mFontName = "Futura";
    CPoint mReferencePoint;
};
