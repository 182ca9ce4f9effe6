// Copy: arrays of vectors or matrices from one of the Strided, Pointer-strided and
// List-strided layouts to one of them, object after object, row after row. Checks
// only the top-level pointers, and `len` of vectors (a zero width or height of
// matrices moves nothing); no table or list entry is ever tested.
#pragma once

#include "move.h"

namespace vorx::copy {

template <class T, int N, Lay L>
struct Vectors {
    template <class S, class D>
    static vorxStatus run(S s, D d, uint32_t len, uint32_t count)
    {
        if (anyNull(s, d)) return kNull;
        if (len == 0) return kBadSize;
        shape::moveObjects(s, d, len, 1, count);
        return kOk;
    }

    // Pointer-strided to Pointer-strided reads through dst's table on both sides:
    // element j of object k comes from dst[j] + srcByteShift + k*srcObjectStride.
    // The src table is only tested for null.
    template <class U>
    static vorxStatus run(ElemTable<const U> s, ElemTable<U> d, uint32_t len, uint32_t count)
    {
        if (anyNull(s, d)) return kNull;
        if (len == 0) return kBadSize;
        ElemTable<const U> through{d.x, s.bs, s.os, 0};
        shape::moveObjects(through, d, len, 1, count);
        return kOk;
    }
};

template <class T, int N, Lay L>
struct Matrices {
    template <class S, class D>
    static vorxStatus run(S s, D d, uint32_t w, uint32_t h, uint32_t count)
    {
        if (anyNull(s, d)) return kNull;
        shape::moveObjects(s.withShape(h, w), d.withShape(h, w), w, h, count);
        return kOk;
    }
};

}  // namespace vorx::copy

namespace vorx::tag {
struct Copy_va : By<copy::Vectors> {};
struct Copy_ma : By<copy::Matrices> {};
}  // namespace vorx::tag
