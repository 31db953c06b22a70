#include "BuildingBlocks/BasicGeometries/CTextBIG.h"

#include "BuildingBlocks/BasicGeometries/UTextComponentBoundsCalculator.h"
#include "BuildingBlocks/CFieldStream.h"
#include "CTaggedFile/CTaggedFile.h"
#include "CheckError/CErr.h"
#include "CheckError/ULog.h"
#include "Formats/ComponentFormat.h"
#include "KVURawMem/CRawWalk.h"
#include "KVURawMem/KVURawMem.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace {
/// What is stored for every font. Older readers expect these letters where the length should be, and so get "rial".
constexpr char kSavedFontName[] = "Arial";
} // namespace

CTextBIG::CTextBIG()
{
    AllowJoints(false, false);
}

CTextBIG::CTextBIG(CTextBIG* source)
    : CBasicGeometry(source), mText(source->mText), mTextSize(source->mTextSize), mTextStyle(source->mTextStyle),
      mFontName(source->mFontName)
{
    mJointAllowed[0] = mJointAllowed[1] = false;
}

CTextBIG::CTextBIG(void* raw) : CBasicGeometry(raw)
{
    const void* cursor = BehindCommonRecord(raw);
    cursor = KVURawMem::FetchDataFromRawMem(cursor, mTextSize);
    cursor = KVURawMem::FetchDataFromRawMem(cursor, mTextStyle);
    cursor = KVURawMem::FetchDataFromRawMem(cursor, mFontName);
    KVURawMem::FetchDataFromRawMem(cursor, mText);
}

bool CTextBIG::SkipRaw(CRawWalk& walk)
{
    return walk.Skip(kCommonRawSize + 2 * sizeof(int)) && walk.SkipCounted<uint16_t>(1) &&
           walk.SkipCounted<uint16_t>(1);
}

CTextBIG& CTextBIG::operator=(const CTextBIG& source)
{
    mFontName = source.mFontName;
    mText = source.mText;
    mTextSize = source.mTextSize;
    mTextStyle = source.mTextStyle;
    return *this;
}

void CTextBIG::SpecifyTextGeometry(const char* text, const char* fontName, int size)
{
    mFontName = fontName;
    mText = text;
    mTextSize = size;
    AllowJoints(false, false);
}

void CTextBIG::Scale(double factor, bool scaleOffset)
{
    if (!IsScale(factor)) {
        return;
    }
    CBasicGeometry::Scale(factor, scaleOffset);
    mTextSize = ScaledSize(mTextSize, factor);
}

void CTextBIG::SetText(const char* text)
{
    CErr::CheckNull(text, "void CTextBIG::SetText(const char *)", "No text supplied");
    mText = *text != 0 ? text : " ";
}

void CTextBIG::TransferFields(CFieldStream& fields)
{
    CBasicGeometry::TransferFields(fields);
    fields.Pass(mText, mTextSize, mTextStyle, mFontName);
}

void* CTextBIG::GetParameterAsRaw(void* destination)
{
    destination = KVURawMem::AppendDataToRawMem(destination, GetType());
    destination = CBasicGeometry::GetParameterAsRaw(destination);
    destination = KVURawMem::AppendDataToRawMem(destination, mTextSize);
    destination = KVURawMem::AppendDataToRawMem(destination, mTextStyle);
    destination = KVURawMem::AppendDataToRawMem(destination, mFontName);
    return KVURawMem::AppendDataToRawMem(destination, mText);
}

int CTextBIG::GetParameterRawSize()
{
    return kTypeCodeSize + kCommonRawSize + 4 + 4 +
           static_cast<int>(KVURawMem::RawMemSize(mFontName) + KVURawMem::RawMemSize(mText));
}

std::string CTextBIG::ToString(int)
{
    return mText;
}

void CTextBIG::CalcBoundingBox(DRect& box, double angle)
{
    UTextComponentBoundsCalculator::CalcBounds(this, box, angle);
}

void CTextBIG::CalcPlacedBox(DRect& box, double angle)
{
    DRect measured = {};
    CalcBoundingBox(measured, angle + mAngle);
    box = {measured.top + mItemYOffset, measured.left + mItemXOffset, measured.bottom + mItemYOffset,
           measured.right + mItemXOffset};
}

CPoint& CTextBIG::GetRotationReferencePoint(double)
{
    mReferencePoint = CPoint(mItemXOffset, mItemYOffset, 0.0);
    return mReferencePoint;
}

bool CTextBIG::Load(FILE* file, int version)
{
    if (!CBasicGeometry::Load(file, version)) {
        return false;
    }
    const auto& [textSize, textStyle, fontName, text] = ComponentFormat::kTextItem;
    CTaggedFile records(file);
    records.Read(textSize.key, mTextSize);
    records.Read(textStyle.key, mTextStyle);
    char block[fontName.size];
    size_t size = 0;
    if (records.ReadBlock(fontName.key, block, sizeof block, size)) {
        // A length and the characters.
        const size_t length = std::min<size_t>(static_cast<unsigned char>(block[0]), size - 1);
        mFontName.assign(block + 1, strnlen(block + 1, length));
    }
    records.Read(text.key, mText);
    return true;
}

void CTextBIG::Save(FILE* file)
{
    const auto& [textSize, textStyle, fontName, text] = ComponentFormat::kTextItem;
    CTaggedFile records(file);
    records.Write(ComponentFormat::kType.key, GetType());
    CBasicGeometry::Save(file);
    records.Write(textSize.key, mTextSize);
    records.Write(textStyle.key, mTextStyle);
    ULog::Warn("No saving fontnames yet!");
    char block[fontName.size] = {};
    std::memcpy(block, kSavedFontName, std::strlen(kSavedFontName));
    records.Write(fontName.key, block, sizeof block);
    records.Write(text.key, mText);
}
