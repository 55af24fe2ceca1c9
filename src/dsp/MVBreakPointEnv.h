// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/MVList.h"
#include "foundation/MVObject.h"

namespace morvanelab
{

/** One point of a curve. */
struct MVCurvePoint
{
    double x = 0.0;
    double y = 0.0;
};

/** An editable curve of 2 to 16 points, always sorted by x; the first and the last point are its ends.
    Edited on one thread at a time; only the owner's table made by render is read on the audio thread. */
class MVBreakPointEnv : public MVObject
{
public:
    static constexpr int minPoints = 2;
    static constexpr int maxPoints = 16;

    /** Two points: (0, 0) and (1, 1). */
    MVBreakPointEnv();
    MVObject* clone() const override { return new MVBreakPointEnv (*this); }
    const char* className() const override { return "MVBreakPointEnv"; }

    /** Back to the two points of a new curve. */
    virtual void clear();
    /** Replaces the whole curve. Points are sorted by x, keeping the order of equal ones; a coordinate that is not
        finite counts as 0. Returns false and changes nothing unless count is 2 to 16. */
    virtual bool setPoints (const MVCurvePoint* points, int count);

    /** Fills out with count values: between two neighbours round((x2 - x1) * count) values that ramp from the first
        one's y. What is left over repeats the last value written. */
    virtual void render (double* out, int count) const;
    /** The curve at x: the y of the point at or before x, or the straight line to the next one. Outside the ends
        their y holds. */
    virtual double value (double x, bool interpolate) const;
    /** False, with both untouched, if there is no such point. */
    virtual bool pointAt (int index, double& x, double& y) const;
    virtual int count() const { return points.count(); }
    /** Index of the point nearest to (x, y), or -1 if none is nearer than radius (and than the root of 2). */
    virtual int nearest (double x, double y, double radius) const;
    /** Moves a point, kept between its neighbours; the ends keep their x. A coordinate that is not a number is left
        as it was. */
    virtual bool movePoint (int index, double x, double y);
    /** Adds a point between the ends, behind points of the same x. Returns its index, or -1 if the curve is full or
        a coordinate is not finite. */
    virtual int addPoint (double x, double y);
    /** Removes a point that is no end. */
    virtual bool removePoint (int index);
    /** The x of the first and of the last point. */
    virtual double low() const { return xMin; }
    virtual double high() const { return xMin + xSpan; }

private:
    using Node = MVList<MVCurvePoint>::Node;

    void updateSpan();

    MVList<MVCurvePoint> points;
    double xMin = 0.0;
    double xSpan = 1.0;
};

} // namespace morvanelab
