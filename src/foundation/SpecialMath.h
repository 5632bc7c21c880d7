// Intersection tests and the weights of quadratic Bezier curves and patches.
// Nothing here allocates or reports an error: a degenerate input yields what the formula yields.
#pragma once

#include "foundation/Plane.h"
#include "foundation/Vector.h"

struct POINT {
    int x = 0, y = 0; // pixels, y downwards
};

class SpecialMath {
public:
    SpecialMath();
    virtual ~SpecialMath() = default;

    // Weights by curve detail: 0 is step 1/16, 1 is 1/8, 2 is 1/4, 3 is 1/2.
    float B[4][2][3] = {};      // first and second forward difference of a quadratic Bezier curve
    float P[4][17][17][9] = {}; // grid point (row, column) of a biquadratic Bezier patch

    // Line against plane (through p, normal n). True with the hit in dest and its parameter in param.
    // Two points; fails when parallel or the hit lies behind a.
    bool PlaneIntersect(const D3DVECTOR& a, const D3DVECTOR& b, const D3DVECTOR& p, const D3DVECTOR& n, D3DVECTOR& dest,
                        float& param) const;
    // b is a direction; any parameter counts, fails when parallel.
    bool PlaneIntersect2Sided(const D3DVECTOR& a, const D3DVECTOR& b, const D3DVECTOR& p, const D3DVECTOR& n,
                              D3DVECTOR& dest, float& param) const;
    // b is a direction; fails when it runs with the normal or the hit lies behind a.
    bool PlaneIntersectRay(const D3DVECTOR& a, const D3DVECTOR& b, const D3DVECTOR& p, const D3DVECTOR& n,
                           D3DVECTOR& dest, float& param) const;
    // b is a direction; fails when it runs with the normal or a lies behind the plane.
    bool PlaneIntersectEx(const D3DVECTOR& a, const D3DVECTOR& b, const D3DVECTOR& p, const D3DVECTOR& n,
                          D3DVECTOR& dest, float& param) const;
    // The segment a to a + b; fails also when the hit lies outside it.
    bool PlaneIntersectSegment(const D3DVECTOR& a, const D3DVECTOR& b, const D3DVECTOR& p, const D3DVECTOR& n,
                               D3DVECTOR& dest, float& param) const;

    // Segments a to a + u and b to b + v, in x and y; touching ends do not cross.
    bool LineIntersect2d(const D3DVECTOR& a, const D3DVECTOR& b, const D3DVECTOR& u, const D3DVECTOR& v) const;
    float CalculateFullAngle(const D3DVECTOR& line1, const D3DVECTOR& line2,
                             const D3DVECTOR& normal) const; // 0 to 2 pi
    // For a point on the triangle's plane; edges and both windings count.
    bool PointInTriangle(const D3DVECTOR& a, const D3DVECTOR& b, const D3DVECTOR& c, const D3DVECTOR& n,
                         const D3DVECTOR& pt) const;
    // u is the weight of v3, v that of v2.
    void GetBarycentricCoordinates(const D3DVECTOR& v1, const D3DVECTOR& v2, const D3DVECTOR& v3, const D3DVECTOR& p,
                                   const D3DVECTOR& n, float& u, float& v) const;
    // The infinite line against a box of centre and half sizes.
    bool BoxRayIntersectInner(const D3DVECTOR& from, const D3DVECTOR& dir, const D3DVECTOR& center,
                              const D3DVECTOR& radius) const;
    bool BoxBoxIntersect(const D3DVECTOR& min1, const D3DVECTOR& max1, const D3DVECTOR& min2,
                         const D3DVECTOR& max2) const; // touching counts
    bool BoxPlaneIntersect(const D3DVECTOR& min, const D3DVECTOR& max, const PLANE& p) const;
    bool FaceInBox(const D3DVECTOR& min, const D3DVECTOR& max, const D3DVECTOR& v1, const D3DVECTOR& v2,
                   const D3DVECTOR& v3, const D3DVECTOR& normal) const;
    bool PointInBox(const D3DVECTOR& min, const D3DVECTOR& max, const D3DVECTOR& point) const;
    float SquareDistanceLinePoint(const D3DVECTOR& from, const D3DVECTOR& dir, const D3DVECTOR& point) const;
    D3DVECTOR ClosestPointOnLine(const D3DVECTOR& a, const D3DVECTOR& b, const D3DVECTOR& p) const;
    D3DVECTOR ClosestPointOnTriangle(const D3DVECTOR& a, const D3DVECTOR& b, const D3DVECTOR& c,
                                     const D3DVECTOR& p) const; // of its edges

    // The unit direction from the camera through a pixel of the current view. Defined beside the matrix bank (render/).
    D3DVECTOR GetSelectionRay(const POINT& point, const D3DVECTOR& camera_position) const;

    // count points along the curve of three control points.
    void GetVerticesAlongBezierCurve3CP(const D3DVECTOR* cp, D3DVECTOR* dest, int detail, int count) const;
    // count by count points of the patch of nine control points, row by row.
    void GetVerticesAlongBezierPatch3CP(const D3DVECTOR* cp, D3DVECTOR* dest, int detail, int count) const;
};

extern const SpecialMath s_math;
