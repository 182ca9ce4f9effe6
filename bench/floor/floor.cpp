// vorx_floor: how fast this machine can possibly do the work that vorx's schemes for
// a few benchmark rows cannot do without, so that each goal can be set against what
// the hardware allows.
//
// The products (3x3, 4x4 and 6x6 32f, row-broadcast scheme): a result row is
// s1(i,0)*row0 + s1(i,1)*row1 + ..., every product and partial sum rounded to single
// in that order. Per object that is N*N four-lane multiplies (6x6: 36 for columns
// 0..3 and 18 for the pairs of columns 4, 5) and as many adds less one per register
// row, and the shuffles of the scheme: a broadcast per element of src1 (SSE has no
// broadcast load); at 6x6 also two spreads per pair of src1 elements in the second
// pass and a duplication per row of src2's columns 4, 5. These run in registers with
// no dependence between objects and no memory traffic: loads and stores come on top.
//
// The 3-vector sum: its loads, adds and stores over data in the first-level cache,
// once as a pass over a dense run (three packed registers for four objects) and once
// object by object (a 32-bit and a 64-bit move per operand, one packed add).
//
// The 32f matrix by vector schemes, per object with the matrix and the vector
// changing: the multiplies, adds and shuffles, in registers like the products.
//
// The 4x4 64f product, which both builds run on the x87 unit: element by element
// over operands in the first-level cache, each element's sum at extended precision
// in a register and stored once. Started from the first product (64 multiplies, 48
// adds), as the peers do and as vorx does where dst shares no byte with a source;
// and started from +0.0 (64 adds), the order of the element loops that write every
// partial sum through.
//
// Prints a JSON list: one entry per probe, with the benchmark row it bounds (the
// operation's id and layouts), what it times, and cycles and ns per object.
// The products need a processor with AVX (see below); elsewhere they are left out.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <initializer_list>

namespace {

constexpr unsigned long kTurns = 2000000;

template <class F>
double nsPerTurn(F body)
{
    double best = 1e30;
    for (int rep = 0; rep < 5; ++rep) {
        auto t0 = std::chrono::steady_clock::now();
        for (unsigned long i = 0; i < kTurns; ++i) body();
        std::chrono::duration<double, std::nano> dt = std::chrono::steady_clock::now() - t0;
        best = std::min(best, dt.count() / kTurns);
    }
    return best;
}

// Each instruction writes a register it does not read, in the three-operand VEX
// form of the same 128-bit operations: the SSE forms would chain every register to
// itself and measure latency instead. The execution units are the same, so this is
// a floor for the two-operand code as well.
#define M(r) "vmulps %%xmm6, %%xmm6, %%xmm" #r "\n\t"
#define A(r) "vaddps %%xmm6, %%xmm6, %%xmm" #r "\n\t"
#define S(r) "vshufps $0, %%xmm6, %%xmm6, %%xmm" #r "\n\t"
#define X4(X) X(0) X(1) X(2) X(3)
#define X16(X) X4(X) X4(X) X4(X) X4(X)

// Every turn first loads 1.0 into the source register, so no operand is ever
// denormal (which would be slow for reasons of its own).
const float kOne[4] = {1.0f, 1.0f, 1.0f, 1.0f};
#define TURN(ops) __asm__ volatile("vmovups %0, %%xmm6\n\t" ops ::"m"(kOne) \
                                   : "xmm0", "xmm1", "xmm2", "xmm3", "xmm6")

// 3x3: 9 multiplies, 6 adds, 9 broadcasts.
void mul3() { TURN(X4(M) X4(M) M(0) X4(A) A(0) A(1) X4(S) X4(S) S(0)); }
// 4x4: 16 multiplies, 12 adds, 16 broadcasts.
void mul4Muls() { TURN(X16(M)); }
void mul4MulsAdds() { TURN(X16(M) X4(A) X4(A) X4(A)); }
void mul4() { TURN(X16(M) X4(A) X4(A) X4(A) X16(S)); }
// 6x6: 54 multiplies, 45 adds, 36 broadcasts + 18 spreads + 6 duplications.
void mul6() { TURN(X16(M) X16(M) X16(M) X4(M) M(0) M(1) X16(A) X16(A) X4(A) X4(A) X4(A) A(0)
                   X16(S) X16(S) X16(S) X4(S) X4(S) X4(S)); }

// The 3-vector sum over 256 objects in the first-level cache.
constexpr int kObjects = 256;
alignas(64) float gA[3 * kObjects], gB[3 * kObjects], gD[3 * kObjects];

void addDense()
{
    const float* a = gA;
    const float* b = gB;
    float* d = gD;
    for (int k = 0; k < kObjects; k += 4, a += 12, b += 12, d += 12)
        __asm__ volatile(
            "movups (%0), %%xmm0\n\tmovups (%1), %%xmm1\n\taddps %%xmm1, %%xmm0\n\tmovups %%xmm0, (%2)\n\t"
            "movups 16(%0), %%xmm2\n\tmovups 16(%1), %%xmm3\n\taddps %%xmm3, %%xmm2\n\tmovups %%xmm2, 16(%2)\n\t"
            "movups 32(%0), %%xmm4\n\tmovups 32(%1), %%xmm5\n\taddps %%xmm5, %%xmm4\n\tmovups %%xmm4, 32(%2)\n\t"
            ::"r"(a), "r"(b), "r"(d) : "xmm0", "xmm1", "xmm2", "xmm3", "xmm4", "xmm5", "memory");
}

void addObjects()
{
    const float* a = gA;
    const float* b = gB;
    float* d = gD;
    for (int k = 0; k < kObjects; ++k, a += 3, b += 3, d += 3)
        __asm__ volatile(
            "movss (%0), %%xmm0\n\tmovhps 4(%0), %%xmm0\n\tmovss (%1), %%xmm1\n\tmovhps 4(%1), %%xmm1\n\t"
            "addps %%xmm1, %%xmm0\n\tmovss %%xmm0, (%2)\n\tmovhps %%xmm0, 4(%2)\n\t"
            ::"r"(a), "r"(b), "r"(d) : "xmm0", "xmm1", "memory");
}

// The matrix by vector schemes, per object with the matrix and the vector changing:
// 3x3 transposes in registers (6 shuffles) and broadcasts 3 elements; 4x4 and 6x6
// pair rows in 2-by-2 blocks (4 and 9 shuffles), spread x in pairs (2 and 3) and
// exchange register halves at the end (2 and 3).
void mv3() { TURN(M(0) M(1) M(2) A(0) A(1) S(0) S(1) S(2) S(3) S(0) S(1) S(2) S(3) S(0)); }
void mv4() { TURN(X4(M) A(0) A(1) A(2) X4(S) X4(S)); }
void mv6() { TURN(X4(M) X4(M) M(0) X4(A) X4(A) X4(S) X4(S) X4(S) S(0) S(1) S(2)); }

// The 4x4 64f product on the x87 unit. The elements are independent chains; the
// processor overlaps them (and the objects) as far as its x87 pipes allow.
alignas(64) double gX1[16] = {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};
alignas(64) double gX2[16] = {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};
alignas(64) double gXD[16];
#define XK(i, k, j) "fldl 32*" #i "+8*" #k "(%0)\n\tfmull 32*" #k "+8*" #j "(%1)\n\tfaddp\n\t"
#define XTAIL(i, j) XK(i, 1, j) XK(i, 2, j) XK(i, 3, j) "fstpl 32*" #i "+8*" #j "(%2)\n\t"
// +0.0 is held under the stack top for the whole object.
#define XFROMZERO(i, j) "fldl 32*" #i "(%0)\n\tfmull 8*" #j "(%1)\n\tfadd %%st(1), %%st\n\t" XTAIL(i, j)
#define XFROMFIRST(i, j) "fldl 32*" #i "(%0)\n\tfmull 8*" #j "(%1)\n\t" XTAIL(i, j)
#define XROW(E, i) E(i, 0) E(i, 1) E(i, 2) E(i, 3)
#define XOBJECT(E) XROW(E, 0) XROW(E, 1) XROW(E, 2) XROW(E, 3)
void mul4x87FromZero()
{
    __asm__ volatile("fldz\n\t" XOBJECT(XFROMZERO) "fstp %%st(0)" ::"r"(gX1), "r"(gX2), "r"(gXD) : "memory");
}
void mul4x87FromFirst() { __asm__ volatile(XOBJECT(XFROMFIRST) ::"r"(gX1), "r"(gX2), "r"(gXD) : "memory"); }

// One dependent integer add a cycle on every x86 of this century: the clock.
double ghz()
{
    unsigned long x = 0;
    double ns = nsPerTurn([&] { __asm__ volatile("add $1, %0\n\tadd $1, %0\n\tadd $1, %0\n\tadd $1, %0" : "+r"(x)); });
    return 4.0 / ns;
}

struct Probe {
    const char* op;       // the benchmark row's id
    const char* layouts;  // the layouts of that row it bounds, as a JSON list
    const char* what;
    void (*body)();
    int objects;  // objects one turn computes
    bool avx;
};

const Probe kProbes[] = {
    {"mul_mama_3x3_32f", "[\"Contiguous\", \"List\"]",
     "9 multiplies, 6 adds, 9 broadcasts (the scheme)", mul3, 1, true},
    {"mul_mama_4x4_32f", "[]", "16 multiplies", mul4Muls, 1, true},
    {"mul_mama_4x4_32f", "[]", "16 multiplies, 12 adds", mul4MulsAdds, 1, true},
    {"mul_mama_4x4_32f", "[\"Contiguous\", \"List\"]",
     "16 multiplies, 12 adds, 16 broadcasts (the scheme)", mul4, 1, true},
    {"mul_mama_6x6_32f", "[\"Contiguous\", \"List\"]",
     "54 multiplies, 45 adds, 60 shuffles (the scheme)", mul6, 1, true},
    {"add_v3_32f", "[\"Contiguous\"]",
     "a dense run: 3 loads, adds and stores of 4 lanes per 4 objects", addDense, kObjects, false},
    {"add_v3_32f", "[\"List\"]",
     "object by object: 4 loads, 1 add, 2 stores", addObjects, kObjects, false},
    {"mul_mama_4x4_64f", "[\"Contiguous\"]",
     "x87: 64 multiplies, 48 adds (sums from the first product), 16 stores (the scheme)", mul4x87FromFirst, 1,
     false},
    {"mul_mama_4x4_64f", "[]", "x87: 64 multiplies, 64 adds (sums from +0.0), 16 stores", mul4x87FromZero, 1,
     false},
    {"mul_mv_3x3_32f", "[\"Contiguous\"]", "3 multiplies, 2 adds, 9 shuffles (the scheme)", mv3, 1, true},
    {"mul_mv_4x4_32f", "[\"Contiguous\"]", "4 multiplies, 3 adds, 8 shuffles (the scheme)", mv4, 1, true},
    {"mul_mv_6x6_32f", "[\"Contiguous\"]", "9 multiplies, 8 adds, 15 shuffles (the scheme)", mv6, 1, true},
};

}  // namespace

int main()
{
    const bool avx = __builtin_cpu_supports("avx");
    double f = ghz();
    std::printf("{\"ghz\": %.3f, \"avx\": %s, \"probes\": [", f, avx ? "true" : "false");
    const char* sep = "\n";
    for (const Probe& p : kProbes) {
        if (p.avx && !avx) continue;
        double ns = nsPerTurn(p.body) / p.objects;
        std::printf("%s  {\"op\": \"%s\", \"layouts\": %s, \"what\": \"%s\", \"cycles\": %.2f, \"ns\": %.3f}",
                    sep, p.op, p.layouts, p.what, ns * f, ns);
        sep = ",\n";
    }
    std::printf("\n]}\n");
    return 0;
}
