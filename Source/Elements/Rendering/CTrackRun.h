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
    /// @param economy  how sparingly it is drawn
    void Add(CCompositeGeometry& element, CBasicGeometry& component, CTrackCourse course,
             const CDrawingOptions& options, bool isFirst, int economy);

    /// By how much what is drawn of a track may stick out of its box, mm: a track that tells of no bed has one.
    static double GetReach(const CCompositeGeometry& element, CBasicGeometry& component);

    /// Draws what was added, and forgets it.
    void Draw();

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
        bool hasSleepers;
    };

    /// Gathers lines on the drawing's path until the pen changes.
    class CStroker {
    public:
        explicit CStroker(const tRenderContext& context) : mContext(context) {}
        ~CStroker() { Flush(); }
        CStroker(const CStroker&) = delete;
        CStroker& operator=(const CStroker&) = delete;
        /// A track is about to come onto the path.
        void Use(const tPen& pen, const tTrack& track);
        void Flush();

    private:
        /// On one path, which is in memory as a whole and whose lines all are looked through in each row of pixels.
        static constexpr double kMostSegments = 8000;
        static constexpr double kPixelsPerSegment = 2; ///< so long a line costs as much as a short one more
        const tRenderContext& mContext;
        tPen mPen;
        double mSegments = 0;
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
    void DrawLines();

    const tRenderContext& mContext;
    std::vector<tTrack> mTracks;
    std::vector<tTrack> mLines; ///< tracks of which only a line is drawn
    size_t mElementStart = 0;   ///< first track of the element at hand
};
