// LoadIdentity: zeros, and 1.0 on a running diagonal, over an array of matrices.
//
// One diagonal counter d starts at 0 before the first object and runs on across
// objects: row i of object k gets its zeros in columns 0..width-1 and then its 1.0
// in column d = k*height + i. So object 0 is an identity where height <= width, and
// later objects get their 1.0s past the ends of their rows (in the Pointer layout,
// at later table entries). `width` and `height` are read as signed numbers: a
// height below 1 leaves every object alone, a width below 1 skips only the zeros.
// Checks: dst null, then a zero count (a bad size); no entry is ever tested.
#pragma once

#include "move.h"

namespace vorx::identity {

// Floors on the strides, compared as unsigned numbers and applied once: a zero
// stride, or any too short for a dense row, takes the dense one.
inline void floorTo(int32_t& stride, uint32_t least)
{
    if (static_cast<uint32_t>(stride) < least) stride = static_cast<int32_t>(least);
}

//   Strided and List-strided: the element stride at least 4 (32f, 64f List) or 8
//   (64f Strided), the row stride at least E*width.
template <class T>
void floors(Direct<T>& d, int32_t w)
{
    floorTo(d.es, uint32_t(sizeof(T)));
    floorTo(d.rs, uint32_t(sizeof(T)) * static_cast<uint32_t>(w));
}
template <class T>
void floors(ObjTable<T>& d, int32_t w)
{
    floorTo(d.es, 4);
    floorTo(d.rs, uint32_t(sizeof(T)) * static_cast<uint32_t>(w));
}
//   Pointer-strided: the object stride at least 4 (32f); in 64f anything below 8
//   becomes 4.
inline void floors(ElemTable<float>& d, int32_t) { floorTo(d.os, 4); }
inline void floors(ElemTable<double>& d, int32_t)
{
    if (static_cast<uint32_t>(d.os) < 8) d.os = 4;
}

// Element j of row i of object k, j counted from the row start (signed indexes:
// the Pointer layout reaches entry i*width + j, wrapped to 32 bits).
template <class T>
T* cell(const Direct<T>& d, uint32_t k, uint32_t i, uint32_t j) { return d.at(k, i, j); }
template <class T>
T* cell(const ObjTable<T>& d, uint32_t k, uint32_t i, uint32_t j) { return d.at(k, i, j); }
template <class T>
T* cell(const ElemTable<T>& d, uint32_t k, uint32_t i, uint32_t j)
{
    int32_t n = static_cast<int32_t>(i * d.pitch + j);
    return byteAt(d.x[n], d.bs + step(k, d.os));
}

template <class T, int N, Lay L>
struct Impl {
    template <class D>
    static vorxStatus run(D d, uint32_t width, uint32_t height, uint32_t count)
    {
        if (!d.top()) return kNull;
        if (count == 0) return kBadSize;
        const int32_t w = static_cast<int32_t>(width), h = static_cast<int32_t>(height);
        floors(d, w);
        d = d.withShape(0, width);
        uint32_t diag = 0;
        for (uint32_t k = 0; k < count; ++k)
            for (int32_t i = 0; i < h; ++i) {
                for (int32_t j = 0; j < w; ++j) *cell(d, k, i, j) = T(0);
                *cell(d, k, i, diag++) = T(1);
            }
        return kOk;
    }
};

}  // namespace vorx::identity

namespace vorx::tag {
struct LoadIdentity_ma : By<identity::Impl> {};
}  // namespace vorx::tag
