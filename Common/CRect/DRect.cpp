#include "CRect/DRect.h"

#include "KVUNum/Angles.h"

#include <algorithm>
#include <cmath>
#include <iterator>

void UDRect::RotateDRect(DRect& rect, double degrees)
{
    const double cosine = std::cos(degrees * kRadiansPerDegree);
    const double sine = std::sin(degrees * kRadiansPerDegree);
    const double xs[] = {rect.left * cosine - rect.top * sine, rect.right * cosine - rect.top * sine,
                         rect.left * cosine - rect.bottom * sine, rect.right * cosine - rect.bottom * sine};
    const double ys[] = {rect.left * sine + rect.top * cosine, rect.right * sine + rect.top * cosine,
                         rect.left * sine + rect.bottom * cosine, rect.right * sine + rect.bottom * cosine};
    const auto [left, right] = std::minmax_element(std::begin(xs), std::end(xs));
    const auto [top, bottom] = std::minmax_element(std::begin(ys), std::end(ys));
    rect = {*top, *left, *bottom, *right};
}
