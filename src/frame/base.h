// The common ground of every unit: the public types, the export attribute, the
// layout and operand-kind tags that the generated wrappers name, and the Body
// template through which each wrapper reaches its family.
#pragma once

#include <stdint.h>

#include "vorx.h"

// An exported function is one body: everything it calls is inlined into it, so that
// its fixed sizes and layout reach every loop as constants.
#define VORX_EXPORT extern "C" __attribute__((visibility("default"), flatten))

namespace vorx {

// The six layouts of a call. The letters of the exported names: none, S2, P, PS2, L, LS2.
enum class Lay { C, S2, P, PS2, L, LS2 };

// Operand kinds as the names spell them; mq is a single matrix whose argument list
// carries an object stride that is never read.
enum class K { v, va, m, ma, mT, maT, mq };

constexpr vorxStatus kOk = vorxStatusOk;
constexpr vorxStatus kBadSize = vorxStatusBadSize;
constexpr vorxStatus kNull = vorxStatusNullPointer;
constexpr vorxStatus kZeroDivide = vorxStatusZeroDivide;

// Layouts whose elements lie E bytes apart inside a row: the ones the packed
// 32f schemes serve.
constexpr bool adjacent(Lay l) { return l == Lay::C || l == Lay::L; }

// Every exported function is `Body<tag, type, fixed size or 0, layout>::run(...)`
// with its operands already turned into addressing views (operand.h). A family
// makes its tags derive from a template that provides `Impl<T, N, L>`; a function
// with a behaviour of its own is a full specialisation of Body beside its unit.
template <class Tag, class T, int N, Lay L>
struct Body : Tag::template Impl<T, N, L> {};

}  // namespace vorx
