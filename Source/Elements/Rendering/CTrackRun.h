// Tracks that are drawn together.
#pragma once

#include "Elements/Rendering/CComponentRenderer.h"

#include <vector>

class CCompositeGeometry;

/// Collects tracks that follow each other in drawing order and draws them layer by layer: all beds, then all sleepers,
/// then all rails. So neither the bed of a neighbour nor the second route of a turnout covers rails, and beds that
/// touch become one area.
class CTrackRun {
public:
    explicit CTrackRun(const tRenderContext& context) : mContext(context) {}

    /// Adds a track of an element.
    /// @param isFirst  the first component of its element that is track
    void Add(CCompositeGeometry& element, CBasicGeometry& component, CTrackCourse course,
             const CDrawingOptions& options, bool isFirst);

    /// By how much what is drawn of a track may stick out of its box, mm: a track that tells of no bed has one.
    static double GetReach(const CCompositeGeometry& element, CBasicGeometry& component);

    /// Draws what was added, and forgets it.
    void Draw();

    size_t GetSize() const { return mTracks.size(); }

private:
    struct tTrack {
        CTrackCourse course;
        CDrawingOptions options;
        double bedWidth;
        double gauge;
        double railWidth;
        bool hasMidRail;
        double pitch;      ///< of the sleepers
        double dashOffset; ///< where in their pattern the course begins
        bool isBranch;     ///< an earlier track of the same element may lie under it
    };

    /// Gathers lines on the drawing's path until the pen changes.
    class CStroker {
    public:
        explicit CStroker(CDrawing& drawing) : mDrawing(drawing) {}
        ~CStroker() { Flush(); }
        CStroker(const CStroker&) = delete;
        CStroker& operator=(const CStroker&) = delete;
        void Use(const tPen& pen);
        void Flush();

    private:
        static constexpr int kMostTracks = 2000; ///< on one path, which is in memory as a whole
        CDrawing& mDrawing;
        tPen mPen;
        int mCount = 0;
    };

    struct tWidths {
        double gauge;
        double bed;
    };
    /// What is drawn of a track that need not tell of either.
    static tWidths WidthsOf(const CCompositeGeometry& element, CBasicGeometry& component);
    void SpaceSleepers(tTrack& track, double natural, bool isFirst) const;
    double RailWidth(const tTrack& track) const;
    bool HasBed() const;
    void DrawSelection();
    void DrawBeds();
    void DrawSleepers();
    void DrawRails();
    void DrawCentreLines();
    void DrawEnds();

    const tRenderContext& mContext;
    std::vector<tTrack> mTracks;
    size_t mElementStart = 0; ///< first track of the element at hand
};
