// SPDX-License-Identifier: GPL-3.0-or-later
#include "dsp/MVBreakPointEnv.h"

#include "foundation/MVMath.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace morvanelab
{

MVBreakPointEnv::MVBreakPointEnv() { clear(); }

void MVBreakPointEnv::clear()
{
    static constexpr MVCurvePoint ends[minPoints] { { 0.0, 0.0 }, { 1.0, 1.0 } };
    setPoints (ends, minPoints);
}

bool MVBreakPointEnv::setPoints (const MVCurvePoint* newPoints, int newCount)
{
    if (newPoints == nullptr || newCount < minPoints || newCount > maxPoints)
        return false;

    std::array<MVCurvePoint, maxPoints> sorted {};
    const auto finite = [] (double value) { return std::isfinite (value) ? value : 0.0; };
    std::transform (newPoints, newPoints + newCount, sorted.begin(),
                    [&] (const MVCurvePoint& point) {
                        return MVCurvePoint { finite (point.x), finite (point.y) };
                    });
    std::stable_sort (sorted.begin(), sorted.begin() + newCount,
                      [] (const MVCurvePoint& a, const MVCurvePoint& b) { return a.x < b.x; });

    points.clear();
    std::for_each (sorted.begin(), sorted.begin() + newCount,
                   [this] (const MVCurvePoint& point) { points.addTail (point); });
    updateSpan();
    return true;
}

void MVBreakPointEnv::updateSpan()
{
    xMin = points.firstNode()->value.x;
    xSpan = points.lastNode()->value.x - xMin;
}

void MVBreakPointEnv::render (double* out, int size) const
{
    int written = 0;
    double last = points.firstNode()->value.y;

    for (const Node* node = points.firstNode(); node->next != nullptr; node = node->next)
    {
        const MVCurvePoint& from = node->value;
        const MVCurvePoint& to = node->next->value;
        const int n = truncToInt (std::floor ((to.x - from.x) * size + 0.5));
        const double step = n > 0 ? (to.y - from.y) / n : 0.0;

        for (int i = 0; i < n && written < size; ++i, ++written)
        {
            last = from.y + i * step;
            out[written] = last;
        }
    }

    if (written < size)
        std::fill (out + written, out + size, last);
}

double MVBreakPointEnv::value (double x, bool interpolate) const
{
    const Node* node = points.firstNode();
    while (node != nullptr && ! (node->value.x >= x))
        node = node->next;

    if (node == nullptr)
        return points.lastNode()->value.y;
    if (node->value.x == x || node->previous == nullptr)
        return node->value.y;

    const MVCurvePoint& from = node->previous->value;
    const MVCurvePoint& to = node->value;
    return interpolate ? from.y + (to.y - from.y) * ((x - from.x) / (to.x - from.x)) : from.y;
}

bool MVBreakPointEnv::pointAt (int index, double& x, double& y) const
{
    const Node* node = index >= 0 ? points.firstNode() : nullptr;
    while (node != nullptr && index-- > 0)
        node = node->next;
    if (node == nullptr)
        return false;

    x = node->value.x;
    y = node->value.y;
    return true;
}

int MVBreakPointEnv::nearest (double x, double y, double radius) const
{
    double best = 2.0;
    int found = -1;
    int index = 0;

    for (const Node* node = points.firstNode(); node != nullptr; node = node->next, ++index)
    {
        const double dx = node->value.x - x;
        const double dy = node->value.y - y;
        const double distance = dx * dx + dy * dy;
        if (distance < best)
        {
            best = distance;
            found = index;
        }
    }

    return std::sqrt (best) < radius ? found : -1;
}

bool MVBreakPointEnv::movePoint (int index, double x, double y)
{
    Node* node = index >= 0 ? points.firstNode() : nullptr;
    while (node != nullptr && index-- > 0)
        node = node->next;
    if (node == nullptr)
        return false;

    const bool isEnd = node->previous == nullptr || node->next == nullptr;
    if (! isEnd && ! std::isnan (x))
        node->value.x = limitTo (x, node->previous->value.x, node->next->value.x);
    if (std::isfinite (y))
        node->value.y = y;
    return true;
}

int MVBreakPointEnv::addPoint (double x, double y)
{
    if (count() >= maxPoints || ! std::isfinite (x) || ! std::isfinite (y))
        return -1;

    const MVCurvePoint point { limitTo (x, low(), points.lastNode()->value.x), y };
    int index = 1;
    const Node* behind = points.firstNode()->next;
    for (; behind->next != nullptr && behind->value.x <= point.x; behind = behind->next)
        ++index;

    return points.insertAt (index, point) ? index : -1;
}

bool MVBreakPointEnv::removePoint (int index) { return index > 0 && index < count() - 1 && points.removeAt (index); }

} // namespace morvanelab
