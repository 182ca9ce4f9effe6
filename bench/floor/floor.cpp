// vorx_floor: how fast this machine can possibly do the floating-point work of one
// 4x4 32f product under vorx's row-broadcast scheme, with no memory traffic at all.
//
// A result row is s1(i,0)*row0 + s1(i,1)*row1 + s1(i,2)*row2 + s1(i,3)*row3, every
// product and partial sum rounded to single in that order. Per object that is 16
// four-lane multiplies and 12 four-lane adds that no scheme can avoid, plus one
// broadcast (a shuffle, SSE having no broadcast load) per element of src1: 16.
// The probe times those instructions with no dependence between objects and prints
// cycles and ns per object, so a goal can be set against what the hardware allows.
//
// The probe needs a processor with AVX (see below); elsewhere it says so and stops.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <initializer_list>

namespace {

constexpr unsigned long kTurns = 20000000;

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
#define FOUR(X) X(0) X(1) X(2) X(3)
#define MULS FOUR(M) FOUR(M) FOUR(M) FOUR(M)
#define ADDS FOUR(A) FOUR(A) FOUR(A)
#define SHUFS FOUR(S) FOUR(S) FOUR(S) FOUR(S)

// Every turn first loads 1.0 into the source register, so no operand is ever
// denormal (which would be slow for reasons of its own).
const float kOne[4] = {1.0f, 1.0f, 1.0f, 1.0f};
#define TURN(ops) __asm__ volatile("vmovups %0, %%xmm6\n\t" ops ::"m"(kOne) \
                                   : "xmm0", "xmm1", "xmm2", "xmm3", "xmm6")

void mulsOnly() { TURN(MULS); }
void mulsAdds() { TURN(MULS ADDS); }
void scheme() { TURN(MULS ADDS SHUFS); }

// The matrix by vector schemes, per object with the matrix and the vector changing:
// 3x3 transposes in registers (6 shuffles) and broadcasts 3 elements; 4x4 and 6x6
// pair rows in 2-by-2 blocks (4 and 9 shuffles), spread x in pairs (2 and 3) and
// exchange register halves at the end (2 and 3).
void mv3() { TURN(M(0) M(1) M(2) A(0) A(1) S(0) S(1) S(2) S(3) S(0) S(1) S(2) S(3) S(0)); }
void mv4() { TURN(FOUR(M) A(0) A(1) A(2) FOUR(S) FOUR(S)); }
void mv6() { TURN(FOUR(M) FOUR(M) M(0) FOUR(A) FOUR(A) FOUR(S) FOUR(S) FOUR(S) S(0) S(1) S(2)); }

// One dependent integer add a cycle on every x86 of this century: the clock.
double ghz()
{
    unsigned long x = 0;
    double ns = nsPerTurn([&] { __asm__ volatile("add $1, %0\n\tadd $1, %0\n\tadd $1, %0\n\tadd $1, %0" : "+r"(x)); });
    return 4.0 / ns;
}

}  // namespace

int main()
{
    if (!__builtin_cpu_supports("avx")) {
        std::printf("## Floor of the 4x4 by 4x4 32f product\n\nNot measured: the probe needs AVX "
                    "encodings, which this processor lacks.\n");
        return 0;
    }
    double f = ghz();
    struct Row {
        const char* what;
        void (*body)();
    };
    auto table = [f](std::initializer_list<Row> rows) {
        std::printf("| work per object | cycles | ns at this clock |\n|---|---|---|\n");
        for (auto& r : rows) {
            double ns = nsPerTurn(r.body);
            std::printf("| %s | %.1f | %.2f |\n", r.what, ns * f, ns);
        }
    };
    std::printf("## Floor of the 4x4 by 4x4 32f product on this machine\n\n");
    std::printf("Clock while probing: %.2f GHz (a chain of dependent integer adds). Work of one object, "
                "in registers, objects independent (`vorx_floor`, built with the benchmarks):\n\n", f);
    table({{"16 multiplies", mulsOnly},
           {"16 multiplies, 12 adds", mulsAdds},
           {"16 multiplies, 12 adds, 16 broadcasts (the scheme)", scheme}});
    std::printf("\nThe last line is the least time any implementation of the row-broadcast scheme "
                "can take for one object here; loads and stores come on top.\n");
    std::printf("\n## Floor of the 32f matrix by vector schemes (both operands changing)\n\n");
    table({{"3x3: 3 multiplies, 2 adds, 9 shuffles", mv3},
           {"4x4: 4 multiplies, 3 adds, 8 shuffles", mv4},
           {"6x6: 9 multiplies, 8 adds, 15 shuffles", mv6}});
    return 0;
}
