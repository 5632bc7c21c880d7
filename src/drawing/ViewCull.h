// What an orthographic view cannot show anything of, by the matrices as they are.
#pragma once

#include "drawing/DrawContext.h"
#include "foundation/Vector.h"

class ViewCull {
public:
    explicit ViewCull(const DrawContext& context);
    bool Hides(const D3DVECTOR& min, const D3DVECTOR& max) const { // of all vertices
        return orthographic && (axes[0].Misses(min, max) || axes[1].Misses(min, max));
    }

private:
    struct Axis { // of the screen
        D3DVECTOR direction;
        float origin = 0, limit = 0;

        bool Misses(const D3DVECTOR& min, const D3DVECTOR& max) const {
            const float a = DotProduct(direction, min) + origin, b = DotProduct(direction, max) + origin;
            return (a < -limit && b < -limit) || (a > limit && b > limit);
        }
    };
    bool orthographic;
    Axis axes[2];
};
