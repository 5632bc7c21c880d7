#include <algorithm>
#include <cstring>
#include <limits>

#include "render/SoftState.h"

void CoarseDepth::Resize(int picture_width, int picture_height) {
    width = picture_width;
    height = picture_height;
    columns = (width + SIDE - 1) / SIDE;
    squares.resize(static_cast<size_t>(columns) * static_cast<size_t>((height + SIDE - 1) / SIDE));
    Forget();
}

void CoarseDepth::Forget() {
    std::fill(squares.begin(), squares.end(), Square{std::numeric_limits<float>::infinity(), true});
}

void CoarseDepth::Forget(int top, int bottom) {
    for (int row = top / SIDE; row * SIDE < bottom; ++row)
        std::fill_n(&At(0, row), columns, Square{std::numeric_limits<float>::infinity(), true});
}

void CoarseDepth::Touch(int left, int top, int right, int bottom) {
    for (int row = top / SIDE; row * SIDE < bottom; ++row)
        for (int column = left / SIDE; column * SIDE < right; ++column)
            At(column, row).touched = true;
}

void CoarseDepth::Look(const float* depths, int column, int row) {
    const int left = column * SIDE, right = std::min(left + SIDE, width);
    float farthest = 0;
    using Floats = float __attribute__((vector_size(16)));
    Floats columns_farthest[SIDE / 4] = {};
    for (int y = row * SIDE; y < std::min(row * SIDE + SIDE, height); ++y) {
        const float* const line = depths + static_cast<size_t>(y) * static_cast<size_t>(width);
        if (right - left == SIDE) {
            for (int i = 0; i < SIDE / 4; ++i) {
                Floats there;
                std::memcpy(&there, line + left + 4 * i, sizeof(there));
                columns_farthest[i] = columns_farthest[i] < there ? there : columns_farthest[i];
            }
            continue;
        }
        for (int x = left; x < right; ++x)
            farthest = farthest < line[x] ? line[x] : farthest;
    }
    for (const Floats& four : columns_farthest)
        for (int i = 0; i < 4; ++i)
            farthest = std::max(farthest, four[i]);
    At(column, row) = {farthest, false};
}

bool CoarseDepth::IsNearer(const float* depths, int left, int top, int right, int bottom, float depth) {
    for (int row = top / SIDE; row * SIDE < bottom; ++row)
        for (int column = left / SIDE; column * SIDE < right; ++column) {
            const Square& square = At(column, row);
            if (square.farthest >= depth && square.touched)
                Look(depths, column, row);
            if (square.farthest >= depth)
                return false;
        }
    return true;
}
