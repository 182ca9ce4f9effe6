// The layout fixture: dense data materialised in any of the six layouts, with odd
// strides, byte shifts that are not multiples of the element size, pointer tables
// and object lists, inside a guarded arena so that any write outside an operand's
// elements shows. Operands bind themselves to the catalogue's argument names, so a
// table-driven test can call every function of a family through one adapter.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
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

struct Options {
    int misalign = -1;   // base address modulo 16; -1: random
    bool tight = false;  // Contiguous rows and objects with no padding at all
    bool zeroObjectStride = false;
    bool run = false;    // Pointer: the elements' stretches back to back in order (one run)
};

// `count` objects of `rows` x `cols` stored elements of T in layout `lay`. A single
// operand (array false) of a List or Pointer-strided call takes the plain form the
// call gives it: Contiguous, Strided or Pointer.
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
        strided_ = lay == Lay::S2 || lay == Lay::LS2;
        es_ = strided_ ? E + pad(0, 5) : E;
        rs_ = static_cast<int32_t>((cols - 1) * es_ + E) + (o.tight ? 0 : pad(0, 7));
        int32_t objBytes = static_cast<int32_t>((rows - 1) * rs_) + static_cast<int32_t>((cols - 1) * es_ + E);
        bs_ = (lay == Lay::P || lay == Lay::PS2 || lay == Lay::L || lay == Lay::LS2) ? pad(-9, 9) : 0;
        size_t lead = 64 + static_cast<size_t>(o.misalign >= 0 ? o.misalign : pad(0, 15));
        if (lay == Lay::C || lay == Lay::S2) {
            os_ = o.zeroObjectStride ? 0 : objBytes + (o.tight ? 0 : pad(0, 9));
            alloc(lead + static_cast<size_t>(count_) * std::max(os_, objBytes) + 64);
            for (uint32_t k = 0; k < count_; ++k)
                for (uint32_t i = 0; i < rows; ++i)
                    for (uint32_t j = 0; j < cols; ++j)
                        place(k, i, j, lead + k * os_ + i * rs_ + j * es_);
            base_ = mem(lead);
        } else if (lay == Lay::P || lay == Lay::PS2) {
            // One entry per element of one object; objects E (Pointer) or os apart.
            os_ = !array ? 0 : lay == Lay::P ? E : E + pad(0, 6);
            size_t region = static_cast<size_t>(count_ - 1) * os_ + E + (o.run ? 0 : pad(0, 5));
            std::vector<uint32_t> order(rows * cols);
            for (uint32_t e = 0; e < order.size(); ++e) order[e] = e;
            if (!o.run) shuffle(order, rng);
            alloc(lead + region * order.size() + 64);
            table_.assign(rows * cols, nullptr);
            for (uint32_t slot = 0; slot < order.size(); ++slot) {
                uint32_t e = order[slot];
                size_t at = lead + slot * region;
                table_[e] = reinterpret_cast<T*>(mem(at) - bs_);
                for (uint32_t k = 0; k < count_; ++k) place(k, e / cols, e % cols, at + k * os_);
            }
        } else {
            os_ = 0;
            size_t region = static_cast<size_t>(objBytes) + pad(0, 9);
            std::vector<uint32_t> order(count_);
            for (uint32_t k = 0; k < count_; ++k) order[k] = k;
            shuffle(order, rng);
            alloc(lead + region * count_ + 64);
            table_.assign(count_, nullptr);
            for (uint32_t slot = 0; slot < count_; ++slot) {
                uint32_t k = order[slot];
                size_t at = lead + slot * region;
                table_[k] = reinterpret_cast<T*>(mem(at) - bs_);
                for (uint32_t i = 0; i < rows; ++i)
                    for (uint32_t j = 0; j < cols; ++j) place(k, i, j, at + i * rs_ + j * es_);
            }
        }
    }

    Lay layout() const { return lay_; }
    uint32_t count() const { return count_; }
    uint32_t rows() const { return rows_; }
    uint32_t cols() const { return cols_; }
    int32_t objectStride() const { return os_; }
    int32_t rowStride() const { return rs_; }
    int32_t elemStride() const { return es_; }
    int32_t byteShift() const { return bs_; }
    bool usesTable() const { return !table_.empty(); }
    T** table() { return table_.data(); }
    T* base() { return reinterpret_cast<T*>(base_); }
    void* pointer() { return usesTable() ? static_cast<void*>(table_.data()) : static_cast<void*>(base_); }

    T get(uint32_t k, uint32_t i, uint32_t j) const
    {
        T v;
        std::memcpy(&v, &arena_[offset(k, i, j)], sizeof v);
        return v;
    }
    void set(uint32_t k, uint32_t i, uint32_t j, T v) { std::memcpy(&arena_[offset(k, i, j)], &v, sizeof v); }
    T* addr(uint32_t k, uint32_t i, uint32_t j) { return reinterpret_cast<T*>(&arena_[offset(k, i, j)]); }

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

    // All elements, objects then rows then columns, as raw bytes.
    std::vector<unsigned char> bytes() const
    {
        std::vector<unsigned char> out;
        for (uint32_t k = 0; k < count_; ++k)
            for (uint32_t i = 0; i < rows_; ++i)
                for (uint32_t j = 0; j < cols_; ++j) {
                    size_t o = offset(k, i, j);
                    out.insert(out.end(), arena_.begin() + o, arena_.begin() + o + E);
                }
        return out;
    }

    // True when no byte outside the elements has changed.
    bool guardsIntact() const
    {
        for (size_t n = 0; n < arena_.size(); ++n)
            if (!owned_[n] && arena_[n] != kGuard) return false;
        return true;
    }

private:
    void alloc(size_t n)
    {
        arena_.assign(n + 16, kGuard);
        owned_.assign(n + 16, false);
        // Keep the arena's own start on 16 bytes so `misalign` means what it says.
        shift_ = (16 - reinterpret_cast<uintptr_t>(arena_.data()) % 16) % 16;
    }
    unsigned char* mem(size_t at) { return arena_.data() + shift_ + at; }
    void place(uint32_t k, uint32_t i, uint32_t j, size_t at)
    {
        at += shift_;
        if (offsets_.empty()) offsets_.assign(static_cast<size_t>(count_) * rows_ * cols_, 0);
        offsets_[(static_cast<size_t>(k) * rows_ + i) * cols_ + j] = at;
        for (int b = 0; b < E; ++b) owned_[at + b] = true;
    }
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
    bool strided_ = false;
    int32_t es_ = 0, rs_ = 0, os_ = 0, bs_ = 0;
    size_t shift_ = 0;
    std::vector<unsigned char> arena_;
    std::vector<bool> owned_;
    std::vector<size_t> offsets_;
    std::vector<T*> table_;
    unsigned char* base_ = nullptr;
};

// Exact x87 arithmetic of the references: operands widened exactly, one rounding
// to double through memory.
inline double roundToDouble(long double x)
{
    volatile double d = static_cast<double>(x);
    return d;
}

// The reference of one element-wise sum or difference: one operation, one rounding.
template <class T>
T addOrSub(bool sub, T a, T b)
{
    if constexpr (sizeof(T) == 4) {
        volatile float r = sub ? a - b : a + b;
        return r;
    } else {
        long double x = a, y = b;
        return roundToDouble(sub ? x - y : x + y);
    }
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
