// A growing array whose capacity steps by K. Used by the physics data.
#pragma once

#include <cstddef>
#include <vector>

template <class T, int K>
class WorkList {
public:
    void Insert(T item) {
        if (Size() == aloc)
            aloc += K;
        pole.push_back(item);
    }
    void Clear() { pole.clear(); }
    int Size() const { return static_cast<int>(pole.size()); }
    int Allocated() const { return aloc; }
    T& operator[](int index) { return pole[static_cast<size_t>(index)]; } // unchecked
    const T& operator[](int index) const { return pole[static_cast<size_t>(index)]; }
    auto begin() { return pole.begin(); }
    auto end() { return pole.end(); }
    auto begin() const { return pole.begin(); }
    auto end() const { return pole.end(); }

private:
    std::vector<T> pole;
    int aloc = K;
};
