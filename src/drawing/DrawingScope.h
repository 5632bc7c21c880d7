// Open while several views are drawn one after another, by one that knows that the level does not change in between:
// what a view has found out about the brushes then serves the next. Without one every view looks anew.
#pragma once

#include <cstdint>

class DrawingScope {
public:
    DrawingScope() {
        if (depth++ == 0)
            ++opened;
    }
    ~DrawingScope() { --depth; }
    DrawingScope(const DrawingScope&) = delete;
    DrawingScope& operator=(const DrawingScope&) = delete;

    // Another number for each that is opened, 0 while there is none. One inside another goes on with its number.
    static uint64_t Current() { return depth > 0 ? opened : 0; }

private:
    static inline int depth = 0;
    static inline uint64_t opened = 0;
};
