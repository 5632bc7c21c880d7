// Paths of movies: a list of point entities, and the spline through them that gives position, roll and field of view at
// every moment. The tangents are those of Kochanek and Bartels (1984): tension, continuity, bias.
#pragma once

#include <cstdint>
#include <vector>

#include "foundation/SimpleList.h"
#include "foundation/Vector.h"

class Entity;

inline constexpr float STANDARD_PATH_SPEED = 100.0f; // world units a second, when the first point names none

// The parameters of one point, as its entity holds them.
struct PathPoint {
    D3DVECTOR position;
    float delay = 0; // seconds at the point before it is left
    float speed = 0; // of the segment that arrives here; 0: the path's standard speed
    float tension = 0, continuity = 0, bias = 0;
    float ease_to = 0, ease_from = 0; // easing of arrival and departure; ease_to of the first point is the play mode
    float rotation = 0, fov = 0;      // degrees
};
PathPoint PathPointOf(const Entity& point); // what is not finite, and a negative delay or speed, counts as 0
void SetPointParameter(Entity& point, const char* name, float value); // a point without it gets it
// The points of a list that exist; ids of none leave the list.
std::vector<PathPoint> PathPoints(SimpleList<uint32_t>& list);

enum PathPlayMode {
    PATH_HOLD = 0,
    PATH_LOOP = 1,
    PATH_BACK_AND_FORTH = -1
}; // any other: time runs on, and nothing moves

float StandardSpeed(const std::vector<PathPoint>& points);
// Seconds from one point to the next, without delays.
float SegmentTime(const PathPoint& from, const PathPoint& to, float standard_speed);
// Seconds; the delay of the first point does not count. 0 for an empty path.
float PathTime(const std::vector<PathPoint>& points);
float PlayedTime(float time, const std::vector<PathPoint>& points); // by the play mode

// One segment, from points[index] to the next, with everything that the spline needs.
struct PathSegment {
    PathPoint a, b;
    D3DVECTOR tangent_a, tangent_b;
    float rotation_tangent_a = 0, rotation_tangent_b = 0, fov_tangent_a = 0, fov_tangent_b = 0;
    float start_time = 0, delay = 0, end_time = 0; // it is left at start_time + delay and ends at delay + end_time
};
std::vector<PathSegment> PathSegments(const std::vector<PathPoint>& points);
// The segment in which a list is at a time, by its play mode, and how far along it: 0 to 1, the easing terms scaled.
struct PathPlace {
    int segment = -1; // -1: on none
    float u = 0;
};
PathPlace FindPathPlace(float time, const std::vector<PathPoint>& points, const std::vector<PathSegment>& segments,
                        float easing = 1);
D3DVECTOR HermitePoint(const D3DVECTOR& a, const D3DVECTOR& b, const D3DVECTOR& tangent_a, const D3DVECTOR& tangent_b,
                       float u); // u from 0 to 1

// What is there at a time. The results stay as they are for an empty list, fewer than two points, or a time behind the
// last segment. Ids of no object leave the list.
void ComputePathPos(float time, SimpleList<uint32_t>& list, D3DVECTOR& position, float& o_rot, float& o_fov);
