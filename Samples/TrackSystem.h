// Measures of the track system that the samples are built with, in mm and degrees.
//
// Everything follows from three numbers: the angle and the radius of the turnouts and the distance of parallel tracks.
//
//   A turnout's two routes part at the point where its branch, drawn backwards, crosses its straight route. The curve
//   begins kTangent before that point and ends kTangent behind it; from there the branch runs straight on. Its arm is
//   as long as it takes to get half-way to the next track, so two turnouts, branch to branch, are a crossover, and a
//   turnout, a kBranchStraight and a curve against it lead to a parallel track:
//
//       toe                                straight end
//        |----kTangent----*-----kArm × cos-----|
//                           `--._
//                                `--._kArm
//                                     `--| branch end, kSpacing / 2 aside
//
//   The straight end lies exactly half a crossover away from the toe, at kUnit, which is the system's grid.
#pragma once

/// Measures of the invented H0 system.
namespace TrackSystem {
inline constexpr double kGauge = 16.5;
inline constexpr double kTrackbed = 40.0;
/// Distance of parallel tracks, centre to centre; the radii of the circles differ by it.
inline constexpr double kSpacing = 62.0;

inline constexpr double kTurnoutAngle = 15.0;
inline constexpr double kTurnoutRadius = 530.0;
inline constexpr double kSine = 0.25881904510252076; ///< of the turnout angle
inline constexpr double kCosine = 0.9659258262890683;
inline constexpr double kHalfTangent = 0.13165249758739585; ///< tangent of half of it

inline constexpr double kTangent = kTurnoutRadius * kHalfTangent;
inline constexpr double kArm = kSpacing / (2.0 * kSine);
inline constexpr double kBranchStraight = kArm - kTangent;
inline constexpr double kUnit = kTangent + kArm * kCosine;

/// A crossing lies between two tracks of a ladder: its arms are those of turnouts, on either route.
inline constexpr double kCrossingLength = 2.0 * kArm * kCosine;
/// Way along a ladder from one track to the next.
inline constexpr double kLadderStep = 2.0 * kArm;
/// What is missing of it between two turnouts of the ladder.
inline constexpr double kLadderFiller = kLadderStep - kUnit;

inline constexpr double kRadius2 = 422.0;
inline constexpr double kRadius3 = kRadius2 + kSpacing;
inline constexpr double kRadius4 = kRadius3 + kSpacing;

/// Distance of a turntable's edge from its middle, and the angle between its outlets.
inline constexpr double kTurntableRadius = 165.0;
inline constexpr double kTurntablePitch = 15.0;
inline constexpr int kTurntableStalls = 5;
} // namespace TrackSystem
