// The sample grids of sweeps (5 control points), strips (6) and patches (9): they follow the surface's own parameters.
// The outer texels lie outside the surface, at parameters below 0 and above 1.
#include "compiler/Lighting.h"

namespace {

constexpr float ONE_THIRD = 0.33333334f;

// Position at parameter t of the quadratic curve p0 p1 p2.
D3DVECTOR Quadratic(float t, const D3DVECTOR& p0, const D3DVECTOR& p1, const D3DVECTOR& p2) {
    return p0 * ((1 - t) * (1 - t)) + p1 * (2 * t * (1 - t)) + p2 * (t * t);
}

struct CurveLengths {
    float u, v; // along a row, across the rows
};

CurveLengths MeasureCurve(const Surface& surface) {
    const std::vector<D3DVECTOR>& c = surface.cp;
    const auto apart = [&c](size_t i, size_t j) { return Magnitude(c[i] - c[j]); };
    switch (surface.cp_count) {
    case CURVE_SWEEP:
        return {apart(0, 1) + apart(1, 2), apart(3, 4)};
    case CURVE_STRIP:
        return {(apart(0, 1) + apart(1, 2) + apart(3, 4) + apart(4, 5)) * 0.5f,
                (apart(3, 0) + apart(4, 1) + apart(5, 2)) * ONE_THIRD};
    default:
        return {(apart(0, 1) + apart(1, 2) + apart(3, 4) + apart(4, 5) + apart(6, 7) + apart(7, 8)) * ONE_THIRD,
                (apart(0, 3) + apart(3, 6) + apart(1, 4) + apart(4, 7) + apart(2, 5) + apart(5, 8)) * ONE_THIRD};
    }
}

// Parameters of the sample columns or rows.
std::vector<float> SampleParameters(int texels, int ts) {
    std::vector<float> parameters(static_cast<size_t>(texels * ts));
    for (size_t i = 0; i < parameters.size(); ++i)
        parameters[i] = (-1.0f + 1.0f / static_cast<float>(2 * ts) + static_cast<float>(i) / static_cast<float>(ts)) /
                        static_cast<float>(texels - 2);
    return parameters;
}

void FillSweep(const std::vector<D3DVECTOR>& c, const std::vector<float>& a, const std::vector<float>& b,
               std::vector<D3DVECTOR>& points) {
    size_t sample = 0;
    for (const float row : b)
        for (const float column : a)
            points[sample++] = Quadratic(column, c[0], c[1], c[2]) + (c[4] - c[3]) * row;
}

void FillStrip(const std::vector<D3DVECTOR>& c, const std::vector<float>& a, const std::vector<float>& b,
               std::vector<D3DVECTOR>& points) {
    size_t sample = 0;
    for (const float row : b)
        for (const float column : a) {
            const D3DVECTOR first = Quadratic(column, c[0], c[1], c[2]), second = Quadratic(column, c[3], c[4], c[5]);
            points[sample++] = first + (second - first) * row;
        }
}

void FillPatch(const std::vector<D3DVECTOR>& c, const std::vector<float>& a, const std::vector<float>& b,
               std::vector<D3DVECTOR>& points) {
    const auto basis = [](float t, float(&weights)[3]) {
        weights[0] = (1 - t) * (1 - t);
        weights[1] = 2 * t * (1 - t);
        weights[2] = t * t;
    };
    size_t sample = 0;
    for (const float row : b)
        for (const float column : a) {
            float across[3], along[3];
            basis(row, across);
            basis(column, along);
            D3DVECTOR p;
            for (size_t k = 0; k < 9; ++k)
                p += c[k] * (across[k / 3] * along[k % 3]);
            points[sample++] = p;
        }
}

} // namespace

void Lighting::CalculateLightmapUV4Curves(Surface& surface) {
    const bool known =
        surface.cp_count == CURVE_SWEEP || surface.cp_count == CURVE_STRIP || surface.cp_count == CURVE_PATCH;
    if (!known || surface.cp.size() < static_cast<size_t>(surface.cp_count)) {
        SetGridSize(surface, UNIFORM_SIDE, UNIFORM_SIDE);
        return;
    }
    const CurveLengths lengths = MeasureCurve(surface);
    const int width = LightmapSide(lengths.u, input.options.lightmap_detail);
    const int height = LightmapSide(lengths.v, input.options.lightmap_detail);
    SetGridSize(surface, width, height);
    const std::vector<float> a = SampleParameters(width, Subdivision()), b = SampleParameters(height, Subdivision());
    if (surface.cp_count == CURVE_SWEEP)
        FillSweep(surface.cp, a, b, texelpoints);
    else if (surface.cp_count == CURVE_STRIP)
        FillStrip(surface.cp, a, b, texelpoints);
    else
        FillPatch(surface.cp, a, b, texelpoints);
    const int columns = width * Subdivision(), rows = height * Subdivision();
    SampleNormals(columns, rows);
    CopyBorder(columns, rows);
}

// Normals from the triangles between samples: larger triangles weigh more.
void Lighting::SampleNormals(int columns, int rows) {
    const int ts = Subdivision();
    const auto at = [columns](int row, int column) {
        return static_cast<size_t>(row) * static_cast<size_t>(columns) + static_cast<size_t>(column);
    };
    const auto add = [this](size_t p, size_t q, size_t r) {
        const D3DVECTOR cross = CrossProduct(texelpoints[q] - texelpoints[p], texelpoints[r] - texelpoints[p]);
        for (const size_t corner : {p, q, r})
            texelnormals[corner] += cross;
    };
    for (int j = 0; j < rows - ts; ++j)
        for (int i = 0; i < columns - ts; ++i) {
            const size_t p = at(j, i), q = at(j + 1, i), r = at(j + 1, i + 1), s = at(j, i + 1);
            add(p, q, r);
            add(p, r, s);
        }
    for (D3DVECTOR& normal : texelnormals)
        normal = NormalizeOrZero(normal);
}

// The outer texels take the samples beside them, whole rows first, then whole columns.
void Lighting::CopyBorder(int columns, int rows) {
    const int ts = Subdivision();
    const auto at = [columns](int row, int column) {
        return static_cast<size_t>(row) * static_cast<size_t>(columns) + static_cast<size_t>(column);
    };
    for (std::vector<D3DVECTOR>* grid : {&texelpoints, &texelnormals}) {
        for (int k = 0; k < ts; ++k)
            for (int i = 0; i < columns; ++i) {
                (*grid)[at(k, i)] = (*grid)[at(ts, i)];
                (*grid)[at(rows - 1 - k, i)] = (*grid)[at(rows - 1 - ts, i)];
            }
        for (int j = 0; j < rows; ++j)
            for (int k = 0; k < ts; ++k) {
                (*grid)[at(j, k)] = (*grid)[at(j, ts)];
                (*grid)[at(j, columns - 1 - k)] = (*grid)[at(j, columns - 1 - ts)];
            }
    }
}
