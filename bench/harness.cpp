#include "harness.h"

#include <benchmark/benchmark.h>

#include <cfloat>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <tuple>

namespace vb {

const char* layName(Lay l) {
    switch (l) {
    case Lay::C: return "Contiguous";
    case Lay::S2: return "Strided";
    case Lay::P: return "Pointer";
    case Lay::L: return "List";
    }
    return "?";
}

std::size_t elemSize(Elem e) { return e == Elem::F64 ? 8 : 4; }

static std::size_t spareObjects(std::size_t n, int rows) { return n / static_cast<std::size_t>(rows) + 1; }

void Arr::layOut(Lay l, std::size_t count, int r, int c, std::size_t elemBytes) {
    lay = l;
    n = count;
    rows = r;
    cols = c;
    esz = elemBytes;
    const std::size_t e = static_cast<std::size_t>(r) * c;
    const std::size_t objBytes = e * esz;
    std::size_t bytes = 0;
    switch (l) {
    case Lay::C:
        // Spare objects behind the array: the LU factorisation reads, for object k, a
        // word k rows past its last pivot (see bench_lu.cpp), which for the last objects
        // lies behind the array.
        es = static_cast<long>(esz), rs = c * es, os = r * rs;
        bytes = (n + spareObjects(n, r)) * objBytes;
        break;
    case Lay::S2: // each element followed by an unused one, as in an interleaved record
        es = 2 * static_cast<long>(esz), rs = c * es, os = r * rs;
        bytes = n * objBytes * 2;
        break;
    case Lay::P:
        es = static_cast<long>(esz), rs = 0, os = 0;
        bytes = e * n * esz;
        break;
    case Lay::L:
        es = static_cast<long>(esz), rs = c * es, os = 0;
        bytes = n * objBytes;
        break;
    }
    mem.assign(bytes + 64, 0);
    base = mem.data() + ((64 - reinterpret_cast<std::uintptr_t>(mem.data()) % 64) % 64);
    table.clear();
    if (l == Lay::P) {
        for (std::size_t x = 0; x < e; ++x) table.push_back(base + x * n * esz);
    } else if (l == Lay::L) {
        // Objects in a scattered order: a stride coprime with n walks all slots.
        std::size_t step = 1;
        for (std::size_t s : {7919u, 104729u, 1299709u})
            if (n % s != 0) { step = s % (n ? n : 1); break; }
        if (step == 0) step = 1;
        for (std::size_t k = 0; k < n; ++k) table.push_back(base + ((k * step) % n) * objBytes);
    }
}

unsigned char* Arr::addr(std::size_t k, int i, int j) const {
    switch (lay) {
    case Lay::C:
    case Lay::S2: return base + k * os + i * rs + j * es;
    case Lay::P: return static_cast<unsigned char*>(table[i * cols + j]) + k * esz;
    case Lay::L: return static_cast<unsigned char*>(table[k]) + i * rs + j * es;
    }
    return nullptr;
}

long double Arr::get(Elem e, std::size_t k, int i, int j) const {
    switch (e) {
    case Elem::F32: return at<float>(k, i, j);
    case Elem::F64: return at<double>(k, i, j);
    case Elem::U32: return at<std::uint32_t>(k, i, j);
    }
    return 0;
}

void Arr::set(Elem e, std::size_t k, int i, int j, long double v) const {
    switch (e) {
    case Elem::F32: at<float>(k, i, j) = static_cast<float>(v); break;
    case Elem::F64: at<double>(k, i, j) = static_cast<double>(v); break;
    case Elem::U32: at<std::uint32_t>(k, i, j) = static_cast<std::uint32_t>(v); break;
    }
}

std::vector<Op>& registry() {
    static std::vector<Op> ops;
    return ops;
}

Registrar::Registrar(void (*fn)()) { fn(); }

static std::uint64_t mix(std::uint64_t x) {
    x ^= x >> 33, x *= 0xff51afd7ed558ccdULL, x ^= x >> 33, x *= 0xc4ceb9fe1a85ec53ULL;
    return x ^ (x >> 33);
}

double uniform(std::uint64_t& state) {
    state = mix(state + 0x9e3779b97f4a7c15ULL);
    // 24 random bits: exact in both element types.
    return static_cast<double>(state >> 40) * 0x1p-23 - 1.0;
}

void makePivoting(const Ctx& c, int op, std::size_t k, std::uint64_t seed) {
    const Arr& a = c.a[op];
    const int n = a.rows;
    std::uint64_t s = mix(seed ^ (k * 0x1000193ULL));
    // A permutation without fixed point 0, so the first column already needs an exchange.
    int perm[16];
    for (int i = 0; i < n; ++i) perm[i] = i;
    for (int i = n - 1; i > 0; --i) {
        int j = static_cast<int>((uniform(s) + 1.0) * 0.5 * (i + 1)) % (i + 1);
        std::swap(perm[i], perm[j]);
    }
    if (perm[0] == 0) std::swap(perm[0], perm[1 + (k % (n - 1))]);
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j) {
            long double v = 0.5L * uniform(s);
            if (perm[i] == j) v += (uniform(s) < 0 ? -4 : 4);
            a.set(a.esz == 8 ? Elem::F64 : Elem::F32, k, i, j, v);
        }
}

namespace {

Elem resultElem(const Op& op) {
    for (const Operand& o : op.operands)
        if (o.role == Role::Out) return o.elem;
    return Elem::F32;
}

int canonLen(const Op& op) {
    int len = 0;
    for (const Operand& o : op.operands)
        if (o.role == Role::Out) len += o.rows * o.cols;
    return len;
}

std::unique_ptr<Ctx> build(const Op& op, std::size_t opIndex, Lay lay, std::size_t n) {
    auto c = std::make_unique<Ctx>();
    c->n = n;
    for (const Operand& o : op.operands) {
        Arr a;
        Lay l = (o.single || o.role == Role::Work) ? Lay::C : lay;
        a.layOut(l, o.single ? 1 : n, o.rows, o.cols, elemSize(o.elem));
        c->a.push_back(std::move(a));
    }
    for (std::size_t x = 0; x < op.operands.size(); ++x) {
        const Operand& o = op.operands[x];
        if (o.role != Role::In || op.make) continue;
        const std::size_t objs = o.single ? 1 : n;
        for (std::size_t k = 0; k < objs; ++k) {
            std::uint64_t s = mix((opIndex << 40) ^ (x << 32) ^ k);
            for (int i = 0; i < o.rows; ++i)
                for (int j = 0; j < o.cols; ++j) c->a[x].set(o.elem, k, i, j, uniform(s));
        }
    }
    if (op.make)
        for (std::size_t k = 0; k < n; ++k) op.make(*c, k);
    // Outputs and work areas start as NaN (unless the operation says otherwise), so
    // that an element a kernel never writes cannot pass the check.
    for (std::size_t x = 0; x < op.operands.size(); ++x) {
        const Operand& o = op.operands[x];
        if (o.role == Role::In || o.elem == Elem::U32) continue;
        std::size_t objs = o.single ? 1 : n;
        if (c->a[x].lay == Lay::C) objs += spareObjects(objs, o.rows);
        for (std::size_t k = 0; k < objs; ++k)
            for (int i = 0; i < o.rows; ++i)
                for (int j = 0; j < o.cols; ++j) c->a[x].set(o.elem, k, i, j, op.outputFill);
    }
    return c;
}

void defaultCanon(const Op& op, const Ctx& c, std::size_t k, long double* out) {
    for (std::size_t x = 0; x < op.operands.size(); ++x) {
        const Operand& o = op.operands[x];
        if (o.role != Role::Out) continue;
        for (int i = 0; i < o.rows; ++i)
            for (int j = 0; j < o.cols; ++j) *out++ = c.a[x].get(o.elem, k, i, j);
    }
}

constexpr std::size_t kCheckObjects = 40;

// Runs every kernel on a few dozen objects and compares with the long double
// reference; prints one line per kernel and returns the number of failures.
int checkAll(std::string& summary) {
    int failures = 0, passed = 0;
    std::size_t opIndex = 0;
    for (const Op& op : registry()) {
        const int len = canonLen(op);
        const long double eps = resultElem(op) == Elem::F32 ? FLT_EPSILON : DBL_EPSILON;
        for (const Kernel& kn : op.kernels) {
            auto c = build(op, opIndex, kn.lay, kCheckObjects);
            kn.run(*c);
            std::vector<long double> ref(len), got(len);
            long double worst = 0;
            bool ok = true;
            for (std::size_t k = 0; k < kCheckObjects && ok; ++k) {
                op.reference(*c, k, ref.data());
                if (kn.canon) kn.canon(*c, k, got.data());
                else defaultCanon(op, *c, k, got.data());
                long double scale = 1;
                for (long double r : ref) scale = std::fmax(scale, std::fabs(r));
                for (int e = 0; e < len; ++e) {
                    long double err = std::fabs(got[e] - ref[e]) / (eps * scale);
                    if (!(err <= op.tol)) {
                        std::printf("CHECK FAILED %s [%s, %s]: object %zu element %d: %.17Lg, "
                                    "expected %.17Lg\n", op.title.c_str(), layName(kn.lay),
                                    kn.peer.c_str(), k, e, got[e], ref[e]);
                        ok = false;
                        break;
                    }
                    worst = std::fmax(worst, err);
                }
            }
            if (ok) {
                ++passed;
                std::printf("check ok  %-34s %-10s %-10s worst %.2Lf eps\n", op.title.c_str(),
                            layName(kn.lay), kn.peer.c_str(), worst);
            } else {
                ++failures;
            }
        }
        ++opIndex;
    }
    summary = std::to_string(passed) + " kernels agree with the long double reference on " +
              std::to_string(kCheckObjects) + " objects each; " + std::to_string(failures) +
              " failed";
    return failures;
}

// Data of one operation, layout and size, shared by the kernels that read that layout
// so that they run on the same memory; built at the first run of any of them.
std::map<std::tuple<std::size_t, int, std::size_t>, std::unique_ptr<Ctx>>& cache() {
    static std::map<std::tuple<std::size_t, int, std::size_t>, std::unique_ptr<Ctx>> m;
    return m;
}

void registerTimings(const std::vector<std::size_t>& sizes) {
    std::size_t opIndex = 0;
    for (const Op& op : registry()) {
        for (const Kernel& kn : op.kernels)
            for (std::size_t n : sizes) {
                std::string name = op.id + "/" + layName(kn.lay) + "/" + kn.peer + "/" +
                                   std::to_string(n);
                const Op* o = &op;
                const Kernel* kp = &kn;
                std::size_t idx = opIndex;
                benchmark::RegisterBenchmark(name.c_str(), [o, kp, idx, n](benchmark::State& st) {
                    auto& slot = cache()[{idx, static_cast<int>(kp->lay), n}];
                    if (!slot) slot = build(*o, idx, kp->lay, n);
                    const Ctx& c = *slot;
                    for (auto _ : st) {
                        kp->run(c);
                        benchmark::ClobberMemory();
                    }
                    st.SetItemsProcessed(static_cast<std::int64_t>(st.iterations() * n));
                    st.SetLabel(o->title);
                });
            }
        ++opIndex;
    }
}

} // namespace
} // namespace vb

#ifndef VORX_BENCH_FLAGS
#define VORX_BENCH_FLAGS ""
#endif

// The processor's name, for the report (the timings belong to that machine).
static std::string cpuModel() {
    std::FILE* f = std::fopen("/proc/cpuinfo", "r");
    if (!f) return "unknown";
    char line[256];
    std::string model = "unknown";
    while (std::fgets(line, sizeof line, f))
        if (std::strncmp(line, "model name", 10) == 0) {
            const char* v = std::strchr(line, ':');
            if (v) model = std::string(v + 2, std::strcspn(v + 2, "\n"));
            break;
        }
    std::fclose(f);
    return model;
}

int main(int argc, char** argv) {
    bool quick = false, checkOnly = false;
    std::vector<char*> args{argv[0]};
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--quick") == 0) quick = true;
        else if (std::strcmp(argv[i], "--check-only") == 0) checkOnly = true;
        else args.push_back(argv[i]);
    }
    std::string summary;
    if (vb::checkAll(summary) != 0) {
        std::printf("%s: not timing anything\n", summary.c_str());
        return 1;
    }
    std::printf("%s\n", summary.c_str());
    if (checkOnly) return 0;

    // Quick mode: one size and short runs; later flags on the command line win.
    static char minTime[] = "--benchmark_min_time=0.002";
    if (quick) args.insert(args.begin() + 1, minTime);
    int ac = static_cast<int>(args.size());
    args.push_back(nullptr);
    benchmark::Initialize(&ac, args.data());
    if (benchmark::ReportUnrecognizedArguments(ac, args.data())) return 2;

    benchmark::AddCustomContext("vorx_checks", summary);
    benchmark::AddCustomContext("vorx_target",
                                sizeof(void*) == 4 ? "i386 (the product build)"
                                                   : "native x86_64 build of the same sources");
    benchmark::AddCustomContext("vorx_flags", VORX_BENCH_FLAGS);
    benchmark::AddCustomContext("vorx_quick", quick ? "yes" : "no");
    benchmark::AddCustomContext("vorx_cpu", cpuModel());
    std::vector<std::size_t> sizes{1000};
    if (!quick) sizes.push_back(100000);
    vb::registerTimings(sizes);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
