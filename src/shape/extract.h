// Extract: any operand in a strided, pointer or list layout gathered into one dense
// buffer, object after object, row after row, element after element. Arrays count
// a zero `count` as a bad size; no table or list entry is ever tested.
//
// The rules of the transposed and the Pointer forms, kept as they are:
//   mT  _S2   width and height are the result's: the stored matrix is read
//             transposed, as every transposed operand is.
//   mT  _P    width and height are the stored matrix's: dst[j*height + i] takes the
//             element behind entry i*width + j, and srcByteShift is never read.
//   maT _PS2  the same as ma _PS2: no transposition at all.
//   va  _PS2  the loops run table entry outermost, to the same places.
//   m, mT _P  check nothing at all (and 64f v _P, in its unit).
#pragma once

#include "move.h"

namespace vorx::extract {

// Objects 0..count-1 of h x w, through the operation's view, into the dense buffer.
template <class S, class T>
void dense(const S& s, T* d, uint32_t w, uint32_t h, uint32_t count)
{
    constexpr int32_t E = sizeof(T);
    const Direct<T> to{d, static_cast<int32_t>(w * h) * E, static_cast<int32_t>(w) * E, E};
    shape::moveObjects(s, to, w, h, count);
}

template <class T, int N, Lay L>
struct Vector {
    template <class S>
    static vorxStatus run(S s, T* d, uint32_t len)
    {
        if (anyNull(s) || !d) return kNull;
        if (len == 0) return kBadSize;
        dense(s, d, len, 1, 1);
        return kOk;
    }
};

template <class T, int N, Lay L>
struct Vectors {
    template <class S>
    static vorxStatus run(S s, T* d, uint32_t len, uint32_t count)
    {
        if (anyNull(s) || !d) return kNull;
        if (len == 0 || count == 0) return kBadSize;
        if constexpr (L == Lay::PS2) {
            for (uint32_t j = 0; j < len; ++j)
                for (uint32_t k = 0; k < count; ++k) shape::move(d + k * len + j, s.at(k, 0, j));
        } else {
            dense(s, d, len, 1, count);
        }
        return kOk;
    }
};

template <class T, int N, Lay L>
struct Matrix {
    template <class S>
    static vorxStatus run(S s, T* d, uint32_t w, uint32_t h)
    {
        if constexpr (L == Lay::P) {
            dense(s.withShape(h, w), d, w, h, 1);
        } else {
            if (anyNull(s) || !d) return kNull;
            if (w == 0 || h == 0) return kBadSize;
            dense(s, d, w, h, 1);
        }
        return kOk;
    }

    // mT _P: the table in the stored matrix's row order, entries as they stand.
    template <class U>
    static vorxStatus run(Tr<ElemTable<U>> s, T* d, uint32_t w, uint32_t h)
    {
        for (uint32_t i = 0; i < h; ++i)
            for (uint32_t j = 0; j < w; ++j) shape::move(d + j * h + i, s.v.x[i * w + j]);
        return kOk;
    }
};

template <class T, int N, Lay L>
struct Matrices {
    template <class S>
    static vorxStatus run(S s, T* d, uint32_t w, uint32_t h, uint32_t count)
    {
        if (anyNull(s) || !d) return kNull;
        if (w == 0 || h == 0 || count == 0) return kBadSize;
        dense(untransposedTable(s).withShape(h, w), d, w, h, count);
        return kOk;
    }

    // maT _PS2 reads its table as ma _PS2 does: entry e of object k to dst[k*w*h + e].
    template <class V>
    static V untransposedTable(const V& s) { return s; }
    template <class U>
    static ElemTable<U> untransposedTable(const Tr<ElemTable<U>>& s) { return s.v; }
};

}  // namespace vorx::extract

namespace vorx::tag {
struct Extract_v : By<extract::Vector> {};
struct Extract_va : By<extract::Vectors> {};
struct Extract_m : By<extract::Matrix> {};
struct Extract_mT : By<extract::Matrix> {};
struct Extract_ma : By<extract::Matrices> {};
struct Extract_maT : By<extract::Matrices> {};
}  // namespace vorx::tag
