// The Cholesky families call their own exported functions: a fixed-size name passes
// its size on to the name without a size, and an array form calls the one-object
// function of its layout for each object. Those calls go to hidden aliases of the
// exported entries (each alias defined beside its function, in its unit), so they are
// direct calls inside the library: nothing imported, no PLT, no GOT.
#pragma once

#include <tuple>

#include "../frame/operand.h"

namespace vorx::chol {

// Entry<Tag, T, L>::fn: the function of no fixed size with that tag, type and layout.
template <class Tag, class T, Lay L>
struct Entry;

// The layout of the one-object function an array form calls: List layouts reach
// their objects through the list and then read them as Contiguous or Strided ones,
// Pointer-strided ones through the same tables as Pointer.
constexpr Lay objectLayout(Lay l)
{
    return l == Lay::L ? Lay::C : l == Lay::LS2 ? Lay::S2 : l == Lay::PS2 ? Lay::P : l;
}
constexpr bool strided(Lay l) { return l == Lay::S2 || l == Lay::LS2; }

template <bool Has, class V>
auto maybe(V v)
{
    if constexpr (Has) return std::tuple<V>(v);
    else return std::tuple<>();
}

// An operand's arguments in the order of the exported lists, as make<k, l> took them.
template <K k, Lay l, class T>
auto argsOf(const Direct<T>& v)
{
    constexpr bool matrix = k == K::m || k == K::ma;
    constexpr bool array = k == K::va || k == K::ma;
    return std::tuple_cat(std::tuple<T*>(v.x), maybe<array>(v.os), maybe<matrix>(v.rs),
                          maybe<strided(l)>(v.es));
}
template <K k, Lay l, class T>
auto argsOf(const ObjTable<T>& v)
{
    return std::tuple_cat(std::tuple<T* const*, int32_t>(v.x, v.bs), maybe<k == K::ma>(v.rs),
                          maybe<strided(l)>(v.es));
}
template <K k, Lay l, class T>
auto argsOf(const ElemTable<T>& v)
{
    constexpr bool array = k == K::va || k == K::ma;
    return std::tuple_cat(std::tuple<T* const*, int32_t>(v.x, v.bs), maybe<array && l == Lay::PS2>(v.os));
}

// Object k of an operand as the one-object function of its layout takes it: its
// address (list entry plus shift in List layouts), or the shift plus k times the
// object step in Pointer layouts. A single operand of an array call has no object
// term and gives the same for every k.
template <class T>
Direct<T> objectOf(const Direct<T>& v, uint32_t k) { return {byteAt(v.x, step(k, v.os)), 0, v.rs, v.es}; }
template <class T>
Direct<T> objectOf(const ObjTable<T>& v, uint32_t k) { return {byteAt(v.x[k], v.bs), 0, v.rs, v.es}; }
template <class T>
ElemTable<T> objectOf(const ElemTable<T>& v, uint32_t k)
{
    return {v.x, static_cast<int32_t>(v.bs + step(k, v.os)), 0, v.pitch};
}

// Calls fn with the arguments of every operand, then the trailing words.
template <class Fn, class... Args, class... Tail>
vorxStatus callWith(Fn* fn, const std::tuple<Args...>& args, Tail... tail)
{
    return std::apply(fn, std::tuple_cat(args, std::tuple<Tail...>(tail...)));
}

}  // namespace vorx::chol

// Declares the hidden alias of one exported function and files it as Entry<Tag, T, L>.
#define VORX_CHOL_ENTRY(Tag, T, L, name)                                                \
    extern "C" __attribute__((visibility("hidden"))) decltype(::name) name##_entry;     \
    template <>                                                                         \
    struct vorx::chol::Entry<vorx::tag::Tag, T, vorx::Lay::L> {                          \
        static constexpr decltype(::name)* fn = &name##_entry;                          \
    };

// Defines that alias; in the unit that defines the function.
#define VORX_CHOL_ALIAS(Tag, T, L, name) \
    extern "C" decltype(::name) name##_entry __attribute__((alias(#name)));

// The functions of no fixed size of one operand group and type, in three or six layouts.
#define VORX_CHOL_THREE(X, Tag, T, name) \
    X(Tag, T, C, name) X(Tag, T, S2, name##_S2) X(Tag, T, P, name##_P)
#define VORX_CHOL_SIX(X, Tag, T, name) \
    VORX_CHOL_THREE(X, Tag, T, name) X(Tag, T, PS2, name##_PS2) X(Tag, T, L, name##_L) X(Tag, T, LS2, name##_LS2)
