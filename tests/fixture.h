// The layout fixture: dense data materialised in any of the six layouts, with odd
// strides, byte shifts that are not multiples of the element size, pointer tables
// and object lists, inside a guarded arena so that any write outside an operand's
// elements shows. Operands bind themselves to the catalogue's argument names, so a
// table-driven test can call every function of a family through one adapter.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "vorx.h"
#include "catalogue_calls.inc"

namespace vt {

enum class Lay { C, S2, P, PS2, L, LS2 };

// A shuffle that draws the same numbers in the 32-bit and the native build (the
// standard one does not), so that both builds see the same data.
inline void shuffle(std::vector<uint32_t>& v, std::mt19937& rng)
{
    for (size_t n = v.size(); n > 1; --n) std::swap(v[n - 1], v[rng() % n]);
}

inline Lay layoutOf(std::string_view s)
{
    if (s == "S2") return Lay::S2;
    if (s == "P") return Lay::P;
    if (s == "PS2") return Lay::PS2;
    if (s == "L") return Lay::L;
    if (s == "LS2") return Lay::LS2;
    return Lay::C;
}

// Operand codes of a name, read from the left, longest first ("mamaT" = ma, maT).
inline std::vector<std::string> splitCodes(std::string_view codes)
{
    static const char* const kCodes[] = {"maT", "ma", "mT", "m", "va", "v", "c"};
    std::vector<std::string> out;
    size_t pos = 0;
    while (pos < codes.size()) {
        for (const char* c : kCodes) {
            size_t n = std::strlen(c);
            if (codes.substr(pos, n) == c) {
                out.emplace_back(c);
                pos += n;
                break;
            }
        }
    }
    return out;
}
inline bool isArrayCode(const std::string& c) { return c == "va" || c == "ma" || c == "maT"; }
inline bool isTransposed(const std::string& c) { return c == "mT" || c == "maT"; }

constexpr unsigned char kGuard = 0xA5;

// A random value in [-2^scaleExp, 2^scaleExp) with a full mantissa, made from
// integers and a power of two only: floating-point arithmetic in the tests may keep
// excess precision differently in the 32-bit and the native build, and both builds
// must see the same data.
template <class T>
T randomValue(std::mt19937& rng, int scaleExp = 3)
{
    constexpr int bits = sizeof(T) == 4 ? 24 : 53;
    uint64_t m = (static_cast<uint64_t>(rng()) << 32 | rng()) & ((uint64_t(1) << bits) - 1);
    int64_t centred = static_cast<int64_t>(m) - (int64_t(1) << (bits - 1));
    return std::ldexp(static_cast<T>(centred), scaleExp - (bits - 1));
}

// `v` filled with random values in [-1, 1); returns v'v. The vector of a random
// Householder reflection I - 2 v v' / v'v.
inline long double randomReflector(std::vector<long double>& v, std::mt19937& rng)
{
    long double vv = 0;
    for (auto& x : v) {
        x = randomValue<double>(rng, 0);
        vv += x * x;
    }
    return vv;
}

struct Options {
    int misalign = -1;   // base address modulo 16; -1: random
    bool align16 = false;  // every object, row and list entry on 16 bytes (drawn strides rounded up)
    bool tight = false;  // Contiguous rows and objects with no padding at all
    bool tightRows = false;  // rows with no padding, objects apart as drawn
    bool zeroObjectStride = false;
    bool run = false;    // Pointer: the elements' stretches back to back in order (one run)
    // Strides and shift in bytes, of any sign, instead of drawn ones.
    bool explicitStrides = false;
    bool wholeElements = false;  // a drawn element stride rounded down to whole elements
    int32_t os = 0, rs = 0, es = 0, bs = 0;
    // Guarded: the memory ends `slack` bytes behind the last byte of any element
    // (the reads past an operand a function may make), and an inaccessible page
    // follows; a pointer table ends so too, `tableSlack` entries behind its last,
    // those entries leading to cells that hold `planted`.
    bool guardPage = false;
    uint32_t slack = 0, tableSlack = 0;
    double planted = 1.0;
};

// Memory of one operand: a plain buffer, or pages with an inaccessible one behind
// the last byte. A copy is a plain buffer with the same bytes.
class Arena {
public:
    Arena() = default;
    Arena(size_t n, bool guardPage);
    Arena(const Arena& o) : heap_(o.data(), o.data() + o.size()), size_(o.size_) {}
    Arena& operator=(const Arena& o)
    {
        if (this != &o) *this = Arena(o);
        return *this;
    }
    Arena(Arena&& o) noexcept { swap(o); }
    Arena& operator=(Arena&& o) noexcept
    {
        swap(o);
        return *this;
    }
    ~Arena()
    {
        if (mapped_) munmap(mapped_, mappedSize_);
    }
    // Makes guarded memory unreadable (true) or readable again.
    void protect(bool off)
    {
        if (mapped_) mprotect(mapped_, mappedSize_ - page_, off ? PROT_NONE : PROT_READ | PROT_WRITE);
    }
    unsigned char* data() { return mapped_ ? mapped_ + (mappedSize_ - page_ - size_) : heap_.data(); }
    const unsigned char* data() const { return const_cast<Arena*>(this)->data(); }
    size_t size() const { return size_; }

private:
    void swap(Arena& o) noexcept
    {
        std::swap(heap_, o.heap_);
        std::swap(size_, o.size_);
        std::swap(mapped_, o.mapped_);
        std::swap(mappedSize_, o.mappedSize_);
        std::swap(page_, o.page_);
    }
    std::vector<unsigned char> heap_;
    size_t size_ = 0;
    unsigned char* mapped_ = nullptr;
    size_t mappedSize_ = 0, page_ = 0;
};

inline Arena::Arena(size_t n, bool guardPage) : size_(n)
{
    if (!guardPage) {
        heap_.assign(n, 0);
        return;
    }
    page_ = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    mappedSize_ = (n + page_ - 1) / page_ * page_ + page_;
    void* m = mmap(nullptr, mappedSize_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (m == MAP_FAILED) std::abort();
    mapped_ = static_cast<unsigned char*>(m);
    mprotect(mapped_ + mappedSize_ - page_, page_, PROT_NONE);
}

// `count` objects of `rows` x `cols` stored elements of T in layout `lay`. A single
// operand (array false) of a List or Pointer-strided call takes the plain form the
// call gives it: Contiguous, Strided or Pointer. Strides may be negative or zero;
// elements that share bytes share them in `get` and `set` too.
// A copy is a snapshot of the values: its pointers and tables still lead to the
// original's memory, so bind and call through the original only.
template <class T>
class Laid {
public:
    static constexpr int32_t E = sizeof(T);

    Laid(Lay lay, bool array, uint32_t count, uint32_t rows, uint32_t cols, std::mt19937& rng,
         Options o = {})
        : count_(array ? std::max<uint32_t>(count, 1) : 1), rows_(rows), cols_(cols), array_(array)
    {
        if (!array) lay = lay == Lay::L ? Lay::C : lay == Lay::LS2 ? Lay::S2 : lay == Lay::PS2 ? Lay::P : lay;
        lay_ = lay;
        auto pad = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
        const bool strided = lay == Lay::S2 || lay == Lay::LS2;
        const bool pointer = lay == Lay::P || lay == Lay::PS2;
        const bool list = lay == Lay::L || lay == Lay::LS2;
        const uint32_t width = std::max(cols, 1u);
        if (o.explicitStrides) {
            es_ = strided ? o.es : E;
            rs_ = o.rs;
            bs_ = pointer || list ? o.bs : 0;
        } else {
            es_ = strided ? E + pad(0, 5) : E;
            if (o.wholeElements) es_ -= es_ % E;
            rs_ = static_cast<int32_t>((width - 1) * es_ + E) + (o.tight || o.tightRows ? 0 : pad(0, 7));
            bs_ = pointer || list ? pad(-9, 9) : 0;
            if (o.align16) rs_ = up16(rs_), bs_ = 0;
        }
        // Offsets of the elements of one object from its origin, and their extent.
        int64_t lo = 0, hi = 0;
        for (uint32_t i = 0; i < rows; ++i)
            for (uint32_t j = 0; j < cols; ++j) {
                int64_t at = int64_t(i) * rs_ + int64_t(j) * es_;
                lo = std::min(lo, at);
                hi = std::max(hi, at + E);
            }
        const int64_t objBytes = hi - lo;
        const int64_t lead = 64 + (o.align16 ? 0 : o.misalign >= 0 ? o.misalign : pad(0, 15));
        offsets_.assign(static_cast<size_t>(count_) * rows * cols, 0);
        std::vector<std::pair<int64_t, int64_t>> planted;  // cell, then pointer slot
        int64_t end = 0;
        auto place = [&](uint32_t k, uint32_t i, uint32_t j, int64_t at) {
            offsets_[(static_cast<size_t>(k) * rows_ + i) * cols_ + j] = static_cast<size_t>(at);
            end = std::max(end, at + E);
        };
        if (!pointer && !list) {
            if (o.explicitStrides) os_ = array ? o.os : 0;
            else os_ = o.zeroObjectStride ? 0 : static_cast<int32_t>(objBytes) + (o.tight ? 0 : pad(0, 9));
            if (o.align16 && !o.explicitStrides) os_ = up16(os_);
            int64_t klo = std::min<int64_t>(0, int64_t(count_ - 1) * os_);
            for (uint32_t k = 0; k < count_; ++k)
                for (uint32_t i = 0; i < rows; ++i)
                    for (uint32_t j = 0; j < cols; ++j)
                        place(k, i, j, lead - klo - lo + int64_t(k) * os_ + int64_t(i) * rs_ + int64_t(j) * es_);
            baseAt_ = lead - klo - lo;
        } else if (pointer) {
            // One entry per element of one object; objects E (Pointer) or os apart.
            if (o.explicitStrides) os_ = !array ? 0 : lay == Lay::P ? E : o.os;
            else os_ = !array ? 0 : lay == Lay::P ? E : E + pad(0, 6);
            int64_t klo = std::min<int64_t>(0, int64_t(count_ - 1) * os_);
            int64_t region = std::abs(int64_t(count_ - 1) * os_) + E + (o.run ? 0 : pad(0, 5));
            std::vector<uint32_t> order(rows * cols + o.tableSlack);
            for (uint32_t e = 0; e < order.size(); ++e) order[e] = e;
            if (!o.run) shuffle(order, rng);
            slots_.assign(order.size(), 0);
            for (uint32_t slot = 0; slot < order.size(); ++slot) {
                uint32_t e = order[slot];
                int64_t at = lead + slot * region - klo;
                slots_[e] = at - bs_;
                for (uint32_t k = 0; k < count_; ++k) {
                    if (e < rows * cols) place(k, e / cols, e % cols, at + int64_t(k) * os_);
                    else planted.push_back({at + int64_t(k) * os_, 0}), end = std::max(end, at + int64_t(k) * os_ + E);
                }
            }
        } else {
            os_ = 0;
            int64_t region = objBytes + pad(0, 9);
            if (o.align16) region = up16(region);
            std::vector<uint32_t> order(count_);
            for (uint32_t k = 0; k < count_; ++k) order[k] = k;
            shuffle(order, rng);
            slots_.assign(count_, 0);
            for (uint32_t slot = 0; slot < count_; ++slot) {
                uint32_t k = order[slot];
                int64_t at = lead + slot * region - lo;
                slots_[k] = at - bs_;
                for (uint32_t i = 0; i < rows; ++i)
                    for (uint32_t j = 0; j < cols; ++j) place(k, i, j, at + int64_t(i) * rs_ + int64_t(j) * es_);
            }
        }
        arena_ = Arena(static_cast<size_t>(end + (o.guardPage ? o.slack : std::max(64u, o.slack))), o.guardPage);
        std::memset(arena_.data(), kGuard, arena_.size());
        owned_.assign(arena_.size(), false);
        for (size_t at : offsets_)
            for (int b = 0; b < E; ++b) owned_[at + b] = true;
        for (auto& p : planted) {
            T v = static_cast<T>(o.planted);
            std::memcpy(arena_.data() + p.first, &v, E);
        }
        if (!slots_.empty()) {
            tableMem_ = Arena(slots_.size() * sizeof(T*), o.guardPage);
            for (size_t n = 0; n < slots_.size(); ++n) table()[n] = reinterpret_cast<T*>(mem(slots_[n]));
        }
        initial_.assign(arena_.data(), arena_.data() + arena_.size());
    }

    Lay layout() const { return lay_; }
    uint32_t count() const { return count_; }
    uint32_t rows() const { return rows_; }
    uint32_t cols() const { return cols_; }
    int32_t objectStride() const { return os_; }
    int32_t rowStride() const { return rs_; }
    int32_t elemStride() const { return es_; }
    int32_t byteShift() const { return bs_; }
    bool usesTable() const { return !slots_.empty(); }
    void protect(bool off) { arena_.protect(off); }
    size_t tableSize() const { return slots_.size(); }
    T** table() { return reinterpret_cast<T**>(tableMem_.data()); }
    T* base() { return reinterpret_cast<T*>(mem(baseAt_)); }
    void* pointer() { return usesTable() ? static_cast<void*>(table()) : static_cast<void*>(base()); }

    T get(uint32_t k, uint32_t i, uint32_t j) const
    {
        T v;
        std::memcpy(&v, arena_.data() + offset(k, i, j), sizeof v);
        return v;
    }
    void set(uint32_t k, uint32_t i, uint32_t j, T v) { std::memcpy(arena_.data() + offset(k, i, j), &v, sizeof v); }
    T* addr(uint32_t k, uint32_t i, uint32_t j) { return reinterpret_cast<T*>(arena_.data() + offset(k, i, j)); }
    // Where things lie, as offsets into the operand's memory (the same in a copy):
    // an element, the cell that table entry n leads to with the shift added, and the
    // T found at an offset, if all its bytes lie in the memory.
    int64_t offsetOf(uint32_t k, uint32_t i, uint32_t j) const { return static_cast<int64_t>(offset(k, i, j)); }
    int64_t entryTarget(size_t n) const { return slots_[n] + bs_; }
    bool peek(int64_t at, T& v) const
    {
        if (at < 0 || at + E > static_cast<int64_t>(arena_.size())) return false;
        std::memcpy(&v, arena_.data() + at, E);
        return true;
    }

    void fill(const std::function<T(uint32_t, uint32_t, uint32_t)>& f)
    {
        for (uint32_t k = 0; k < count_; ++k)
            for (uint32_t i = 0; i < rows_; ++i)
                for (uint32_t j = 0; j < cols_; ++j) set(k, i, j, f(k, i, j));
    }
    // Random values with full mantissas, so that every rounding shows.
    void randomize(std::mt19937& rng, int scaleExp = 3)
    {
        fill([&](uint32_t, uint32_t, uint32_t) { return randomValue<T>(rng, scaleExp); });
    }

    // Sets `name` and `name`ObjectStride/RowStride/ElemStride/ByteShift in the pack;
    // a function reads those of its own argument list.
    void bind(ArgPack& a, const std::string& name)
    {
        *static_cast<void**>(argField(a, name)) = pointer();
        setInt(a, name + "ObjectStride", os_);
        setInt(a, name + "RowStride", rs_);
        setInt(a, name + "ElemStride", es_);
        setInt(a, name + "ByteShift", bs_);
    }

    // The elements of object k, row by row.
    std::vector<T> object(uint32_t k) const
    {
        std::vector<T> out;
        for (uint32_t i = 0; i < rows_; ++i)
            for (uint32_t j = 0; j < cols_; ++j) out.push_back(get(k, i, j));
        return out;
    }

    // All elements, objects then rows then columns, as raw bytes.
    std::vector<unsigned char> bytes() const
    {
        std::vector<unsigned char> out;
        for (size_t o : offsets_) out.insert(out.end(), arena_.data() + o, arena_.data() + o + E);
        return out;
    }

    // True when no byte outside the elements has changed.
    bool guardsIntact() const
    {
        for (size_t n = 0; n < arena_.size(); ++n)
            if (!owned_[n] && arena_.data()[n] != initial_[n]) return false;
        return true;
    }

private:
    template <class I> static I up16(I n) { return (n + 15) / 16 * 16; }
    unsigned char* mem(int64_t at) { return arena_.data() + at; }
    size_t offset(uint32_t k, uint32_t i, uint32_t j) const
    {
        return offsets_[(static_cast<size_t>(k) * rows_ + i) * cols_ + j];
    }
    static void setInt(ArgPack& a, const std::string& name, int32_t v)
    {
        if (void* f = argField(a, name)) *static_cast<int32_t*>(f) = v;
    }

    uint32_t count_, rows_, cols_;
    bool array_;
    Lay lay_;
    int32_t es_ = 0, rs_ = 0, os_ = 0, bs_ = 0;
    int64_t baseAt_ = 0;
    Arena arena_, tableMem_;
    std::vector<unsigned char> initial_;
    std::vector<bool> owned_;
    std::vector<size_t> offsets_;
    std::vector<int64_t> slots_;  // table entries as arena offsets (shift taken off)
};

// Exact x87 arithmetic of the references: operands widened exactly, one rounding
// to double through memory.
inline double roundToDouble(long double x)
{
    volatile double d = static_cast<double>(x);
    return d;
}

// Single-precision arithmetic of the references, each operation rounded once. With
// a NaN operand SSE gives the first operand's NaN if it has one, else the second's,
// quietened; the helpers say so explicitly, so that no compiler's choice of operand
// order enters the expected bits.
namespace f32 {
inline float quiet(float x)
{
    uint32_t b;
    std::memcpy(&b, &x, 4);
    b |= 0x00400000u;
    std::memcpy(&x, &b, 4);
    return x;
}
inline uint32_t bitsOf(float x)
{
    uint32_t b;
    std::memcpy(&b, &x, 4);
    return b;
}
// With two NaNs the processor gives the first; the emulator that runs the 32-bit
// tests on machines without 32-bit support applies the x87 unit's rule to SSE too
// (a quiet NaN before a signalling one, else the larger significand). The rule is
// taken from the instruction at run time.
inline bool firstNaNWins()
{
    static const bool first = [] {
        float a = std::numeric_limits<float>::quiet_NaN(), b = a;
        uint32_t ba = bitsOf(a) | 0x10, bb = bitsOf(b) | 0x20;
        std::memcpy(&a, &ba, 4);
        std::memcpy(&b, &bb, 4);
        __asm__("addss %1, %0" : "+x"(a) : "x"(b));
        return bitsOf(a) == ba;
    }();
    return first;
}
inline float pick(float a, float b, float r)
{
    bool na = std::isnan(a), nb = std::isnan(b);
    if (na && nb && !firstNaNWins()) {
        bool sa = !(bitsOf(a) & 0x00400000u), sb = !(bitsOf(b) & 0x00400000u);
        uint32_t fa = bitsOf(a) & 0x007fffffu, fb = bitsOf(b) & 0x007fffffu;
        bool aLarger = fa > fb || (fa == fb && bitsOf(a) < bitsOf(b));
        if (sa != sb) return quiet(sa ? b : a);
        return quiet(aLarger ? a : b);
    }
    if (na) return quiet(a);
    if (nb) return quiet(b);
    return r;
}
inline float add(float a, float b) { volatile float r = a + b; return pick(a, b, r); }
inline float sub(float a, float b) { volatile float r = a - b; return pick(a, b, r); }
inline float mul(float a, float b) { volatile float r = a * b; return pick(a, b, r); }
inline float div(float a, float b) { volatile float r = a / b; return pick(a, b, r); }
}  // namespace f32

// The reference of one element-wise sum or difference: one operation, one rounding.
template <class T>
T addOrSub(bool sub, T a, T b)
{
    if constexpr (sizeof(T) == 4) {
        return sub ? f32::sub(a, b) : f32::add(a, b);
    } else {
        long double x = a, y = b;
        return roundToDouble(sub ? x - y : x + y);
    }
}

// One step of a sum of products held in dst: 32f rounded at the product and the
// sum, 64f formed at extended precision and rounded to double at the store.
template <class T>
T plusProduct(T s, T x, T y)
{
    if constexpr (sizeof(T) == 4) return f32::add(s, f32::mul(x, y));
    else return roundToDouble(static_cast<long double>(s) + static_cast<long double>(x) * y);
}

template <class T>
bool sameBits(T a, T b) { return std::memcmp(&a, &b, sizeof a) == 0; }

// Every catalogue entry the suite calls is recorded; the environment checks at the
// end that no built function went uncalled.
std::set<std::string>& calledNames();
inline vorxStatus call(const CatalogueEntry& e, const ArgPack& a)
{
    calledNames().insert(e.name);
    return e.call(a);
}

// The entries of one family whose operand codes pass `pick`.
inline std::vector<const CatalogueEntry*> entries(std::string_view family,
                                                  const std::function<bool(const CatalogueEntry&)>& pick)
{
    std::vector<const CatalogueEntry*> out;
    for (const auto& e : kCatalogue)
        if (family == e.family && pick(e)) out.push_back(&e);
    return out;
}

// Folds result bytes into the digest that must agree between the 32-bit and the
// native build.
void digest(const std::vector<unsigned char>& bytes);
void digest(int32_t status);

}  // namespace vt
