// ---- The written part of vorx.hpp: views, statuses and the resolution of a call ----

namespace vorx {

// Statuses of the C functions, as a type that must not be dropped.
enum class [[nodiscard]] status : int32_t {
    ok = vorxStatusOk,
    bad_size = vorxStatusBadSize,
    null_pointer = vorxStatusNullPointer,
    zero_divide = vorxStatusZeroDivide,
    not_positive_definite = vorxStatusNotPositiveDefinite,
};

// The exceptions of the checked variants (vorx::checked::add, ...): one type per status.
class error : public std::runtime_error {
public:
    error(status s, const char* what) : std::runtime_error(what), code_(s) {}
    status code() const noexcept { return code_; }
private:
    status code_;
};
struct bad_size : error { bad_size() : error(status::bad_size, "vorx: bad size or count") {} };
struct null_pointer : error {
    null_pointer() : error(status::null_pointer, "vorx: null pointer or null table entry") {}
};
struct zero_divide : error { zero_divide() : error(status::zero_divide, "vorx: division by zero") {} };
struct not_positive_definite : error {
    not_positive_definite() : error(status::not_positive_definite, "vorx: matrix not positive definite") {}
};

// Throws the exception of a status other than ok.
inline void raise_for(status s)
{
    switch (s) {
    case status::ok: return;
    case status::bad_size: throw bad_size();
    case status::null_pointer: throw null_pointer();
    case status::zero_divide: throw zero_divide();
    case status::not_positive_definite: throw not_positive_definite();
    }
    throw error(s, "vorx: unknown status");
}

// The library's version record.
inline const vorxVersionRecord& version() { return *vorxGetLibVersion(); }

// How a view finds its elements (strides and shifts in bytes):
//   contiguous       x + k*objectStride + i*rowStride + j*sizeof(T)
//   strided          x + k*objectStride + i*rowStride + j*elemStride
//   elems            table[i*cols + j] + byteShift + k*sizeof(T)    one pointer per element
//   elems_strided    table[i*cols + j] + byteShift + k*objectStride
//   list             list[k] + byteShift + i*rowStride + j*sizeof(T)  one pointer per object
//   list_strided     list[k] + byteShift + i*rowStride + j*elemStride
// A single object has no object index; its layouts are contiguous, strided and elems.
enum class layout : int { contiguous, strided, elems, elems_strided, list, list_strided };

inline constexpr uint32_t dynamic = 0;  // a size given at run time

// An operand over the caller's memory. E is the element type (const for sources);
// Array: an array of objects (count of them); Matrix: a matrix, else a vector (one row);
// Tr: read transposed; R, C: the stored rows and columns when fixed, else `dynamic`.
template <class E, layout L, bool Array, bool Matrix, bool Tr, uint32_t R, uint32_t C>
struct view {
    static_assert(std::is_same_v<std::remove_const_t<E>, float> ||
                      std::is_same_v<std::remove_const_t<E>, double>,
                  "vorx: elements are float or double");
    static_assert(Array || L == layout::contiguous || L == layout::strided || L == layout::elems,
                  "vorx: a single object is contiguous, strided or elems");
    using element = std::remove_const_t<E>;
    using stored = E;
    static constexpr layout lay = L;
    static constexpr bool array = Array, matrix = Matrix, tr = Tr;
    static constexpr bool table = L == layout::elems || L == layout::elems_strided ||
                                  (Array && (L == layout::list || L == layout::list_strided));
    // The fixed order the view gives a call: its vector length or its square size.
    static constexpr uint32_t fixed = !Matrix ? C : (R == C ? R : dynamic);

    std::conditional_t<table, E* const*, E*> p;
    int32_t os = 0, rs = 0, es = sizeof(E), bs = 0;
    uint32_t n = 1;          // objects
    uint32_t rows = R, cols = C;  // stored shape

    // The operation's shape: a transposed view is read the other way round.
    constexpr uint32_t height() const { return Tr ? cols : rows; }
    constexpr uint32_t width() const { return Tr ? rows : cols; }
    constexpr uint32_t len() const { return cols; }
};

template <class V> struct is_view : std::false_type {};
template <class E, layout L, bool A, bool M, bool T, uint32_t R, uint32_t C>
struct is_view<view<E, L, A, M, T, R, C>> : std::true_type {};

// A matrix view read transposed (the `T` operand codes).
template <class E, layout L, bool A, bool T, uint32_t R, uint32_t C>
constexpr view<E, L, A, true, !T, R, C> transposed(const view<E, L, A, true, T, R, C>& v)
{
    return {v.p, v.os, v.rs, v.es, v.bs, v.n, v.rows, v.cols};
}
template <class V>
constexpr void transposed(const V&) requires(!is_view<V>::value || !V::matrix)
{
    static_assert(is_view<V>::value && V::matrix, "vorx::transposed: only a matrix view reads transposed");
}

namespace detail {
template <class E, layout L, bool A, bool M, uint32_t R, uint32_t C, class P>
constexpr view<E, L, A, M, false, R, C> make(P p, uint32_t rows, uint32_t cols, int32_t os, int32_t rs,
                                             int32_t es, int32_t bs, uint32_t n)
{
    return {p, os, rs, es, bs, n, rows, cols};
}
template <class E> inline constexpr int32_t esz = sizeof(E);
}  // namespace detail

// ---- Vectors. The fixed-size form takes the length as a template argument, the
// ---- run-time form as its first argument after the pointer.
#define VORX_VIEW_PAIR(NAME, LAY, ARR, PTR, FIXED_PARAMS, OS, ES, BS, N)                         \
    template <uint32_t Len, class E>                                                             \
    constexpr auto NAME(PTR p FIXED_PARAMS)                                                      \
    {                                                                                            \
        return detail::make<E, layout::LAY, ARR, false, 1, Len>(p, 1, Len, OS, 0, ES, BS, N);    \
    }                                                                                            \
    template <class E>                                                                           \
    constexpr auto NAME(PTR p, uint32_t len FIXED_PARAMS)                                        \
    {                                                                                            \
        return detail::make<E, layout::LAY, ARR, false, 1, dynamic>(p, 1, len, OS, 0, ES, BS, N); \
    }
#define VORX_COMMA ,
VORX_VIEW_PAIR(vec, contiguous, false, E*, , 0, detail::esz<E>, 0, 1)
VORX_VIEW_PAIR(vec_strided, strided, false, E*, VORX_COMMA int32_t elemStride, 0, elemStride, 0, 1)
VORX_VIEW_PAIR(vec_elems, elems, false, E* const*, VORX_COMMA int32_t byteShift, 0, detail::esz<E>, byteShift, 1)
VORX_VIEW_PAIR(vec_array, contiguous, true, E*, VORX_COMMA int32_t objectStride VORX_COMMA uint32_t count,
               objectStride, detail::esz<E>, 0, count)
VORX_VIEW_PAIR(vec_array_strided, strided, true, E*,
               VORX_COMMA int32_t objectStride VORX_COMMA int32_t elemStride VORX_COMMA uint32_t count,
               objectStride, elemStride, 0, count)
VORX_VIEW_PAIR(vec_array_elems, elems, true, E* const*, VORX_COMMA int32_t byteShift VORX_COMMA uint32_t count,
               detail::esz<E>, detail::esz<E>, byteShift, count)
VORX_VIEW_PAIR(vec_array_elems_strided, elems_strided, true, E* const*,
               VORX_COMMA int32_t byteShift VORX_COMMA int32_t objectStride VORX_COMMA uint32_t count,
               objectStride, detail::esz<E>, byteShift, count)
VORX_VIEW_PAIR(vec_list, list, true, E* const*, VORX_COMMA int32_t byteShift VORX_COMMA uint32_t count, 0,
               detail::esz<E>, byteShift, count)
VORX_VIEW_PAIR(vec_list_strided, list_strided, true, E* const*,
               VORX_COMMA int32_t byteShift VORX_COMMA int32_t elemStride VORX_COMMA uint32_t count, 0,
               elemStride, byteShift, count)
#undef VORX_VIEW_PAIR

// ---- Matrices: mat<Rows, Cols>(p, ...) or mat(p, rows, cols, ...).
#define VORX_VIEW_PAIR(NAME, LAY, ARR, PTR, FIXED_PARAMS, OS, RS, ES, BS, N)                      \
    template <uint32_t Rows, uint32_t Cols, class E>                                             \
    constexpr auto NAME(PTR p FIXED_PARAMS)                                                      \
    {                                                                                            \
        return detail::make<E, layout::LAY, ARR, true, Rows, Cols>(p, Rows, Cols, OS, RS, ES, BS, N); \
    }                                                                                            \
    template <class E>                                                                           \
    constexpr auto NAME(PTR p, uint32_t rows, uint32_t cols FIXED_PARAMS)                        \
    {                                                                                            \
        return detail::make<E, layout::LAY, ARR, true, dynamic, dynamic>(p, rows, cols, OS, RS, ES, BS, N); \
    }
VORX_VIEW_PAIR(mat, contiguous, false, E*, VORX_COMMA int32_t rowStride, 0, rowStride, detail::esz<E>, 0, 1)
VORX_VIEW_PAIR(mat_strided, strided, false, E*, VORX_COMMA int32_t rowStride VORX_COMMA int32_t elemStride, 0,
               rowStride, elemStride, 0, 1)
VORX_VIEW_PAIR(mat_elems, elems, false, E* const*, VORX_COMMA int32_t byteShift, 0, 0, detail::esz<E>,
               byteShift, 1)
VORX_VIEW_PAIR(mat_array, contiguous, true, E*,
               VORX_COMMA int32_t objectStride VORX_COMMA int32_t rowStride VORX_COMMA uint32_t count,
               objectStride, rowStride, detail::esz<E>, 0, count)
VORX_VIEW_PAIR(mat_array_strided, strided, true, E*,
               VORX_COMMA int32_t objectStride VORX_COMMA int32_t rowStride VORX_COMMA int32_t elemStride
                   VORX_COMMA uint32_t count,
               objectStride, rowStride, elemStride, 0, count)
VORX_VIEW_PAIR(mat_array_elems, elems, true, E* const*, VORX_COMMA int32_t byteShift VORX_COMMA uint32_t count,
               detail::esz<E>, 0, detail::esz<E>, byteShift, count)
VORX_VIEW_PAIR(mat_array_elems_strided, elems_strided, true, E* const*,
               VORX_COMMA int32_t byteShift VORX_COMMA int32_t objectStride VORX_COMMA uint32_t count,
               objectStride, 0, detail::esz<E>, byteShift, count)
VORX_VIEW_PAIR(mat_list, list, true, E* const*,
               VORX_COMMA int32_t byteShift VORX_COMMA int32_t rowStride VORX_COMMA uint32_t count, 0,
               rowStride, detail::esz<E>, byteShift, count)
VORX_VIEW_PAIR(mat_list_strided, list_strided, true, E* const*,
               VORX_COMMA int32_t byteShift VORX_COMMA int32_t rowStride VORX_COMMA int32_t elemStride
                   VORX_COMMA uint32_t count,
               0, rowStride, elemStride, byteShift, count)
#undef VORX_VIEW_PAIR
#undef VORX_COMMA

// A dense matrix needs no row stride.
template <uint32_t Rows, uint32_t Cols, class E>
constexpr auto mat(E* p)
{
    return mat<Rows, Cols>(p, static_cast<int32_t>(Cols * sizeof(E)));
}

// ---- Adapters for the containers people have.
template <class E, std::size_t N>
constexpr auto vec(std::array<E, N>& a) { return vec<N>(a.data()); }
template <class E, std::size_t N>
constexpr auto vec(const std::array<E, N>& a) { return vec<N>(a.data()); }
template <class E, std::size_t N>
constexpr auto vec(std::span<E, N> s)
{
    if constexpr (N == std::dynamic_extent)
        return vec(s.data(), static_cast<uint32_t>(s.size()));
    else
        return vec<N>(s.data());
}
// The element type of a (const) std::array, const with it.
template <class A>
using elem_of_t = std::conditional_t<std::is_const_v<A>, const typename A::value_type, typename A::value_type>;

template <class A>
constexpr auto vec_array(std::span<A> s)  // a span of std::array<T, N>
{
    using E = elem_of_t<A>;
    constexpr uint32_t N = std::tuple_size_v<std::remove_const_t<A>>;
    return vec_array<N>(reinterpret_cast<E*>(s.data()), static_cast<int32_t>(sizeof(A)),
                        static_cast<uint32_t>(s.size()));
}
template <class E, std::size_t R, std::size_t C>
constexpr auto mat(std::array<std::array<E, C>, R>& m) { return mat<R, C>(m[0].data()); }
template <class E, std::size_t R, std::size_t C>
constexpr auto mat(const std::array<std::array<E, C>, R>& m) { return mat<R, C>(m[0].data()); }
template <class A>
constexpr auto mat_array(std::span<A> s)  // a span of std::array<std::array<T, C>, R>
{
    using Row = elem_of_t<A>;
    using E = elem_of_t<Row>;
    constexpr uint32_t R = std::tuple_size_v<std::remove_const_t<A>>;
    constexpr uint32_t C = std::tuple_size_v<std::remove_const_t<Row>>;
    return mat_array<R, C>(reinterpret_cast<E*>(s.data()), static_cast<int32_t>(sizeof(A)),
                           static_cast<int32_t>(sizeof(Row)), static_cast<uint32_t>(s.size()));
}

// Eigen's fixed-size matrices and vectors, when Eigen is included before vorx.hpp:
// row-major ones directly, column-major ones as the transposed view of what they
// store (so they serve as sources where the operation takes a transposed operand).
#if defined(EIGEN_WORLD_VERSION)
#define VORX_EIGEN(CONST)                                                                        \
    template <class S, int R, int C, int O, int MR, int MC>                                      \
    constexpr auto mat(CONST Eigen::Matrix<S, R, C, O, MR, MC>& m) requires(R > 1 && C > 1)      \
    {                                                                                            \
        if constexpr ((O & Eigen::RowMajor) != 0)                                                \
            return mat<R, C>(m.data());                                                          \
        else                                                                                     \
            return transposed(mat<C, R>(m.data()));                                              \
    }                                                                                            \
    template <class S, int R, int C, int O, int MR, int MC>                                      \
    constexpr auto vec(CONST Eigen::Matrix<S, R, C, O, MR, MC>& m) requires((R == 1) != (C == 1) && R * C > 1) \
    {                                                                                            \
        return vec<uint32_t(R * C)>(m.data());                                                   \
    }
VORX_EIGEN()
VORX_EIGEN(const)
#undef VORX_EIGEN
#endif

// ---- Resolution of a call: the operands' kinds choose a form (an operand-code list
// ---- of the catalogue), their element type, fixed size and layouts the function.
namespace detail {

enum class op : int;  // one per form, listed below by the generator

// Slot kinds: operand kinds of the catalogue, then the plain arguments.
enum class sk { v, va, m, ma, mT, maT, mq, val, res, idx, cidx, buf };

// What an argument is, as one small number: 1..6 a view of kind v va m ma mT maT,
// 7 a number, 8 a pointer to writable float or double, 9 uint32_t*, 10 const uint32_t*.
template <class A>
constexpr uint32_t arg_code()
{
    using D = std::decay_t<A>;
    if constexpr (is_view<D>::value)
        return !D::matrix ? (D::array ? 2 : 1) : 3 + (D::array ? 1 : 0) + (D::tr ? 2 : 0);
    else if constexpr (std::is_arithmetic_v<D>)
        return 7;
    else if constexpr (std::is_same_v<D, float*> || std::is_same_v<D, double*>)
        return 8;
    else if constexpr (std::is_same_v<D, uint32_t*>)
        return 9;
    else if constexpr (std::is_same_v<D, const uint32_t*>)
        return 10;
    else
        return 0;
}

// Pair: 1 or 2 where the layout suffix names the operand's layout by a letter.
template <sk K, bool Out = false, int Pair = 0>
struct slot {
    static constexpr sk kind = K;
    static constexpr bool out = Out;
    static constexpr int pair = Pair;
    // The argument codes (arg_code) the slot accepts.
    static constexpr uint32_t mask = K == sk::val ? 1u << 7 : (K == sk::res || K == sk::buf) ? 1u << 8
                                     : K == sk::idx ? 1u << 9 : K == sk::cidx ? (1u << 9 | 1u << 10)
                                     : K == sk::v ? 1u << 1 : K == sk::va ? 1u << 2
                                     : (K == sk::m || K == sk::mq) ? 1u << 3 : K == sk::ma ? 1u << 4
                                     : K == sk::mT ? 1u << 5 : 1u << 6;
    // The element type the argument brings (void: none).
    template <class A>
    static auto element()
    {
        using D = std::decay_t<A>;
        if constexpr (is_view<D>::value)
            return std::type_identity<typename D::element>{};
        else if constexpr (K == sk::res || K == sk::buf)
            return std::type_identity<std::remove_pointer_t<D>>{};
        else
            return std::type_identity<void>{};
    }
    template <class A>
    static constexpr bool writable()
    {
        using D = std::decay_t<A>;
        if constexpr (is_view<D>::value && Out)
            return !std::is_const_v<typename D::stored>;
        else
            return true;
    }
};

template <class... T> struct types {};

template <class S, class A>
using elem_t = typename decltype(S::template element<A>())::type;

template <class T, class... Rest> struct first_nonvoid { using type = T; };
template <class... Rest> struct first_nonvoid<void, Rest...> : first_nonvoid<Rest...> {};
template <> struct first_nonvoid<void> { using type = void; };

// The layout code of a name: 0..5 the layouts C S2 P PS2 L LS2; 16 + letters for the
// suffixes of letters (S 1, P 2, L 3), first letter in the high digit.
constexpr int letter(layout l)
{
    return l == layout::strided ? 1 : l == layout::elems_strided ? 2 : l == layout::list_strided ? 3 : -1;
}

// The call's layout from its operands: arrays all alike; a single object fits the
// array layouts that read it as it is laid out (contiguous in C and L, strided in S2
// and LS2, elems in P and PS2). -1: the operands do not combine.
struct lay_fold {
    int arr = -2, single = -2, letters = 0, lettered = 0;
    bool bad = false;
    template <class S, class A>
    constexpr void add()
    {
        using D = std::decay_t<A>;
        if constexpr (is_view<D>::value) {
            int l = static_cast<int>(D::lay);
            if constexpr (S::pair > 0) {
                int c = letter(D::lay);
                if (c < 0) bad = true;
                letters = letters * 4 + c;
                ++lettered;
            } else if (D::array) {
                if (arr != -2 && arr != l) bad = true;
                arr = l;
            } else {
                if (single != -2 && single != l) bad = true;
                single = l;
            }
        }
    }
    constexpr int code() const
    {
        if (bad) return -1;
        if (lettered) return 16 + letters;
        if (arr == -2) return single;
        if (single == -2) return arr;
        // single: 0 contiguous, 1 strided, 2 elems; arrays: single, +2 (L, LS2) or +1 (PS2)
        if (single == 0 && (arr == 0 || arr == 4)) return arr;
        if (single == 1 && (arr == 1 || arr == 5)) return arr;
        if (single == 2 && (arr == 2 || arr == 3)) return arr;
        return -1;
    }
};

template <class S, class A>
constexpr uint32_t fixed_of()
{
    using D = std::decay_t<A>;
    if constexpr (is_view<D>::value) return D::fixed; else return ~0u;  // ~0: says nothing
}

template <op O, class T, unsigned N, int L>
struct fn {
    static constexpr bool exists = false;
};
struct yes {
    static constexpr bool exists = true;
};

template <op O, class... S>
struct form {
    // Whether arguments of these codes fill the slots: plain constant evaluation, no
    // template work per call.
    static constexpr bool fits(const uint32_t* codes, std::size_t n)
    {
        if (n != sizeof...(S)) return false;
        std::size_t i = 0;
        return ((S::mask >> codes[i++] & 1u) && ...);
    }
    template <class... A>
    using element = typename first_nonvoid<elem_t<S, A>..., void>::type;
    template <class... A>
    static constexpr bool consistent()
    {
        using T = element<A...>;
        return ((std::is_void_v<elem_t<S, A>> || std::is_same_v<elem_t<S, A>, T>) && ...) &&
               (S::template writable<A>() && ...) && order<A...>() != ~0u;
    }
    template <class... A>
    static constexpr int lay()
    {
        lay_fold f;
        (f.template add<S, A>(), ...);
        return f.code();
    }
    // The fixed order of the call: the one every view has, 0 (run-time) when a view
    // has none, ~0 when two views fix different orders.
    template <class... A>
    static constexpr uint32_t order()
    {
        uint32_t n = ~0u;
        bool runTime = false, clash = false;
        auto see = [&](uint32_t f) {
            if (f == ~0u) return;
            if (f == dynamic) {
                runTime = true;
            } else {
                clash = clash || (n != ~0u && n != f);
                n = f;
            }
        };
        (see(fixed_of<S, A>()), ...);
        return clash ? ~0u : runTime || n == ~0u ? 0 : n;
    }
    template <class... A>
    using fixed_fn = fn<O, element<A...>, order<A...>(), lay<A...>()>;
    template <class... A>
    using chosen = std::conditional_t<fixed_fn<A...>::exists, fixed_fn<A...>, fn<O, element<A...>, 0, lay<A...>()>>;
    template <class... A>
    static constexpr bool found()
    {
        return chosen<A...>::exists;
    }
};

template <int I, class F, class... Rest> struct nth { using type = typename nth<I - 1, Rest...>::type; };
template <class F, class... Rest> struct nth<0, F, Rest...> { using type = F; };

// The first form whose slots the arguments fit, and what it makes of them.
template <class Args, class... F> struct pick;
template <class... A, class... F>
struct pick<types<A...>, F...> {
    static constexpr int index()
    {
        const uint32_t codes[] = {arg_code<A>()..., 0u};
        int i = 0, at = -1;
        ((at < 0 && F::fits(codes, sizeof...(A)) ? at = i : 0, ++i), ...);
        return at;
    }
    static constexpr bool matched = index() >= 0;
    using form = typename nth<(matched ? index() : 0), F...>::type;
    static constexpr bool consistent_()
    {
        if constexpr (matched) return form::template consistent<A...>(); else return false;
    }
    static constexpr bool consistent = consistent_();
    static constexpr bool found_()
    {
        if constexpr (consistent) return form::template found<A...>(); else return false;
    }
    static constexpr bool found = found_();
    template <class... X>
    static status call(X&&... a)
    {
        return static_cast<status>(form::template chosen<A...>::call(a...));
    }
};

}  // namespace detail
}  // namespace vorx

// The call of an exported function; a test may define it to watch the calls.
#ifndef VORX_HPP_CALL
#define VORX_HPP_CALL(f, ...) ::f(__VA_ARGS__)
#endif
