#include <algorithm>
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
    for (int y = row * SIDE; y < std::min(row * SIDE + SIDE, height); ++y) {
        const float* const line = depths + static_cast<size_t>(y) * static_cast<size_t>(width);
        for (int x = left; x < right; ++x)
            farthest = farthest < line[x] ? line[x] : farthest;
    }
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
