// The benchmark harness: one registration per operation gives its operands, a long
// double reference for one object, and the kernels (vorx and its peers) with the
// layout each one reads. The harness lays the same data out in every layout, checks
// every kernel against the reference on a few dozen objects, and only then times them.
#pragma once
#include <cstddef>
#include <cstdint>
#include <cmath>
#include <functional>
#include <string>
#include <vector>

namespace vb {

enum class Lay { C, S2, P, L };
const char* layName(Lay l);

enum class Elem { F32, F64, U32 };

// What an operand is to the harness. Inputs are filled, outputs are checked (through
// the kernel's canonical form), work buffers are only handed to the kernel.
enum class Role { In, Out, Work };

struct Operand {
    Role role;
    Elem elem;
    int rows, cols;      // a vector is one row
    bool single = false; // one object for the whole call (the `m` of `mam`)
};

// n objects of one operand in one layout. Contiguous: packed objects. Strided: every
// element followed by a gap of one element. Pointer: one pointer per element, the
// objects of an element adjacent. List: one pointer per object, objects scattered.
struct Arr {
    Lay lay = Lay::C;
    int rows = 1, cols = 1;
    std::size_t n = 0, esz = 4;
    unsigned char* base = nullptr;
    long os = 0, rs = 0, es = 0;
    std::vector<void*> table;
    std::vector<unsigned char> mem;

    void layOut(Lay l, std::size_t count, int r, int c, std::size_t elemSize);
    unsigned char* addr(std::size_t k, int i, int j) const;
    template <class T> T& at(std::size_t k, int i, int j) const {
        return *reinterpret_cast<T*>(addr(n == 1 ? 0 : k, i, j));
    }
    long double get(Elem e, std::size_t k, int i, int j) const;
    void set(Elem e, std::size_t k, int i, int j, long double v) const;
};

// The operands of one call, in registration order.
struct Ctx {
    std::size_t n = 0;
    std::vector<Arr> a;
    template <class T> T* p(int i) const { return reinterpret_cast<T*>(a[i].base); }
    template <class T> T** t(int i) const {
        return reinterpret_cast<T**>(const_cast<void**>(a[i].table.data()));
    }
    std::int32_t os(int i) const { return static_cast<std::int32_t>(a[i].os); }
    std::int32_t rs(int i) const { return static_cast<std::int32_t>(a[i].rs); }
    std::int32_t es(int i) const { return static_cast<std::int32_t>(a[i].es); }
    std::uint32_t count() const { return static_cast<std::uint32_t>(n); }
};

// Object k's result in a form every kernel of the operation agrees on.
using Canon = std::function<void(const Ctx&, std::size_t k, long double* out)>;
using Run = std::function<void(const Ctx&)>;

struct Kernel {
    std::string peer; // "vorx", "plain -O2", "plain -O3", "Eigen", "LAPACK", "BLAS"
    Lay lay;
    Run run;
    Canon canon; // empty: the Out operands element by element
};

struct Op {
    std::string id;    // stable key, also used for the targets in the report
    std::string title; // what a reader sees
    std::vector<Operand> operands;
    Canon reference;   // long double, from the inputs as stored
    double tol = 2;    // in units of the element type's epsilon times the object's scale
    std::function<void(const Ctx&, std::size_t k)> make; // empty: random in [-1, 1]
    long double outputFill = NAN; // what the outputs hold before a kernel runs
    std::vector<Kernel> kernels;

    Op& kernel(std::string peer, Lay lay, Run run, Canon canon = {}) {
        kernels.push_back({std::move(peer), lay, std::move(run), std::move(canon)});
        return *this;
    }
};

// Registration: each family's file adds its operations from a static registrar.
std::vector<Op>& registry();
struct Registrar {
    explicit Registrar(void (*fn)());
};

// Deterministic data: the same values in every layout and every build.
double uniform(std::uint64_t& state); // in [-1, 1)

// Matrices that need row exchanges and are well conditioned: a permuted diagonal of
// 4 over small random entries, so each pivot is clear of the others.
void makePivoting(const Ctx& c, int op, std::size_t k, std::uint64_t seed);

std::size_t elemSize(Elem e);
template <class T> constexpr Elem elemOf() { return sizeof(T) == 8 ? Elem::F64 : Elem::F32; }
} // namespace vb
