// The harness: specimens laid out from the catalogue's operand lists, the model
// registry, and the comparison of a call with its prediction.
#include "harness.h"

#include <fcntl.h>
#include <setjmp.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cctype>
#include <cinttypes>
#include <cstdio>
#include <limits>

namespace vt {

uint32_t Dims::operator[](const std::string& n) const
{
    if (n == "objects") return array ? count : 1;
    if (n == "count") return count;
    auto it = v.find(n);
    return it == v.end() ? 0 : it->second;
}

uint32_t Dims::eval(const char* expr) const
{
    uint32_t sum = 0, product = 1;
    std::string name;
    auto factor = [&] {
        uint32_t x = !name.empty() && std::isdigit(static_cast<unsigned char>(name[0]))
                         ? static_cast<uint32_t>(std::stoul(name))
                         : (*this)[name];
        product *= x;
        name.clear();
    };
    for (const char* p = expr;; ++p) {
        if (*p == '^') continue;
        if (*p == '*' || *p == '+' || *p == 0) {
            factor();
            if (*p != '*') {
                sum += product;
                product = 1;
            }
            if (*p == 0) break;
        } else {
            name += *p;
        }
    }
    return sum;
}

bool isF32(const CatalogueEntry& e) { return std::string_view(e.type) == "32f"; }

bool isArrayCall(const CatalogueEntry& e)
{
    for (const auto& c : splitCodes(e.code))
        if (isArrayCode(c)) return true;
    return false;
}

const CatalogueEntry& byName(std::string_view name)
{
    for (const auto& e : kCatalogue)
        if (name == e.name) return e;
    std::fprintf(stderr, "%.*s is not in the catalogue\n", static_cast<int>(name.size()), name.data());
    std::abort();
}

Dims dimsOf(const CatalogueEntry& e, uint32_t n, uint32_t count)
{
    Dims d;
    d.array = false;
    for (unsigned k = 0; k < e.operandCount; ++k) {
        const Operand& o = e.operands[k];
        if (o.role == 'z') d.set(o.name, e.size ? e.size : n);
        if (o.role == 'n') d.array = true;
    }
    d.count = d.array ? count : 1;
    return d;
}

std::vector<Dims> defaultCases(const CatalogueEntry& e)
{
    std::vector<Dims> out;
    std::vector<uint32_t> counts = isArrayCall(e) ? std::vector<uint32_t>{0, 1, 3} : std::vector<uint32_t>{1};
    std::vector<uint32_t> sizes = e.size ? std::vector<uint32_t>{e.size} : std::vector<uint32_t>{1, 2, 3, 7};
    for (uint32_t n : sizes)
        for (uint32_t c : counts) out.push_back(dimsOf(e, n, c));
    if (!e.size)
        for (auto wh : {std::pair<uint32_t, uint32_t>{5, 3}, {3, 5}}) {
            Dims d = dimsOf(e, 4, 3);
            if (!d.v.count("width") || !d.v.count("height")) break;
            d.set("width", wh.first);
            d.set("height", wh.second);
            out.push_back(d);
        }
    return out;
}

std::vector<Dims> Model::cases(const CatalogueEntry& e) const { return defaultCases(e); }

EntryRule Model::entryRule(const CatalogueEntry& e, const Operand& op) const
{
    Lay l = layoutOf(op.layout);
    bool array = isArrayCode(op.kind);
    if (l == Lay::L || l == Lay::LS2) return array ? EntryRule::PerObject : EntryRule::Untested;
    if (l != Lay::P && l != Lay::PS2) return EntryRule::Untested;
    return isArrayCall(e) ? EntryRule::Scan : EntryRule::AsReached;
}

template <class T>
T specialValue(std::mt19937& rng, unsigned payload)
{
    using Bits = std::conditional_t<sizeof(T) == 4, uint32_t, uint64_t>;
    constexpr int mant = sizeof(T) == 4 ? 23 : 52;
    Bits b = 0;
    switch (rng() % 8) {
    case 0:  // a quiet NaN whose payload names its operand
    case 1: {
        T nan = std::numeric_limits<T>::quiet_NaN();
        std::memcpy(&b, &nan, sizeof b);
        b |= static_cast<Bits>(payload & 0xffff) << 4;
        if (rng() % 2) b |= Bits(1) << (sizeof(T) * 8 - 1);
        break;
    }
    case 2: {  // a signalling one in 32f; in 64f the x87 unit quietens it on a load
        if (sizeof(T) == 8) return -std::numeric_limits<T>::quiet_NaN();
        T inf = std::numeric_limits<T>::infinity();
        std::memcpy(&b, &inf, sizeof b);
        b |= static_cast<Bits>(payload & 0xffff) << 4 | 1;
        break;
    }
    case 3: return rng() % 2 ? std::numeric_limits<T>::infinity() : -std::numeric_limits<T>::infinity();
    case 4: return rng() % 2 ? T(0) : -T(0);
    case 5:  // a denormal
        b = (static_cast<Bits>(rng()) << 7 | 1) & ((Bits(1) << mant) - 1);
        if (rng() % 2) b |= Bits(1) << (sizeof(T) * 8 - 1);
        break;
    default: return randomValue<T>(rng, static_cast<int>(rng() % 20) - 10);
    }
    T v;
    std::memcpy(&v, &b, sizeof v);
    return v;
}
template float specialValue<float>(std::mt19937&, unsigned);
template double specialValue<double>(std::mt19937&, unsigned);

namespace {

template <class T>
void fillDefault(Specimen<T>& s, Data data, std::mt19937& rng)
{
    unsigned payload = 1;
    for (auto& a : s.args) {
        const Operand& o = *a.desc;
        if (a.index) {
            Laid<uint32_t>& ix = *a.index;
            if (o.out) {
                ix.fill([](uint32_t, uint32_t, uint32_t) { return 0xDEADBEEFu; });
                continue;
            }
            // One permutation of 0..n-1 per object.
            uint32_t n = std::max<uint32_t>(1, s.d["size"] ? s.d["size"] : ix.cols());
            std::vector<uint32_t> p;
            for (uint32_t j = 0; j < ix.cols(); ++j) {
                if (j % n == 0) {
                    p.resize(n);
                    for (uint32_t q = 0; q < n; ++q) p[q] = q;
                    shuffle(p, rng);
                }
                ix.set(0, 0, j, p[j % n]);
            }
            continue;
        }
        if (!a.elems) {
            if (o.role == 'v') a.value = data == Data::Special ? specialValue<T>(rng, payload++) : randomValue<T>(rng);
            continue;
        }
        Laid<T>& l = *a.elems;
        if (o.out || data == Data::Random) {
            l.randomize(rng);
        } else if (data == Data::Special) {
            unsigned p = payload++;
            l.fill([&](uint32_t, uint32_t, uint32_t) { return specialValue<T>(rng, p); });
        } else {
            // Symmetric with a dominant positive diagonal where square; random elsewhere.
            std::vector<T> off(static_cast<size_t>(l.rows()) * l.cols());
            for (auto& x : off) x = randomValue<T>(rng, 0);
            l.fill([&](uint32_t, uint32_t i, uint32_t j) {
                if (l.rows() != l.cols()) return randomValue<T>(rng, 0);
                if (i == j) return static_cast<T>(l.rows() + 1 + rng() % 4);
                return off[std::min(i, j) * l.cols() + std::max(i, j)];
            });
        }
    }
}

std::vector<const Model*>& registry()
{
    static std::vector<const Model*> models;
    return models;
}

template <class T>
std::string bitsOf(T v)
{
    using Bits = std::conditional_t<sizeof(T) == 4, uint32_t, uint64_t>;
    Bits b;
    std::memcpy(&b, &v, sizeof b);
    char text[64];
    std::snprintf(text, sizeof text, "%.9Lg [%0*" PRIx64 "]", static_cast<long double>(v),
                  static_cast<int>(2 * sizeof(T)), static_cast<uint64_t>(b));
    return text;
}

}  // namespace

void Model::fill(Specimen<float>& s, Data data, std::mt19937& rng) const { fillDefault(s, data, rng); }
void Model::fill(Specimen<double>& s, Data data, std::mt19937& rng) const { fillDefault(s, data, rng); }

RegisterModel::RegisterModel(const Model* m) { registry().push_back(m); }

const Model* modelFor(const CatalogueEntry& e)
{
    for (const Model* m : registry())
        if (m->covers(e)) return m;
    return nullptr;
}

template <class T>
const Arg<T>* Specimen<T>::find(const std::string& name) const
{
    for (const auto& a : args)
        if (name == a.desc->name) return &a;
    return nullptr;
}

template <class T>
bool Specimen<T>::transposed(const std::string& name) const
{
    return isTransposed(arg(name).desc->kind);
}

template <class T>
bool Specimen<T>::isArray(const std::string& name) const
{
    return isArrayCode(arg(name).desc->kind);
}

template <class T>
T Specimen<T>::in(const std::string& name, uint32_t k, uint32_t i, uint32_t j) const
{
    const Arg<T>& a = arg(name);
    uint32_t kk = isArrayCode(a.desc->kind) ? k : 0;
    return isTransposed(a.desc->kind) ? a.elems->get(kk, j, i) : a.elems->get(kk, i, j);
}

template <class T>
void Specimen<T>::leaveOpen(const std::string& name, uint32_t k, uint32_t i, uint32_t j)
{
    const Laid<T>& l = op(name);
    open[name].insert((static_cast<size_t>(k) * l.rows() + i) * l.cols() + j);
}

template <class T>
void Specimen<T>::leaveAllOpen(const std::string& name)
{
    const Laid<T>& l = op(name);
    for (uint32_t k = 0; k < l.count(); ++k)
        for (uint32_t i = 0; i < l.rows(); ++i)
            for (uint32_t j = 0; j < l.cols(); ++j) leaveOpen(name, k, i, j);
}

template <class T>
Specimen<T> Specimen<T>::make(const CatalogueEntry& entry, const Dims& d, const Draw& draw)
{
    Specimen s;
    s.e = &entry;
    s.d = d;
    s.aliasDst = draw.aliasDst;
    s.stackOffset = draw.stackOffset;
    std::mt19937 rng(draw.seed);
    const Model* m = modelFor(entry);
    for (unsigned n = 0; n < entry.operandCount; ++n) {
        const Operand& o = entry.operands[n];
        Arg<T> a;
        a.desc = &o;
        auto it = draw.options.find(o.name);
        Options opt = it == draw.options.end() ? Options{} : it->second;
        if (m) m->options(entry, d, o, opt);
        // A source that is dst's storage too meets what dst meets.
        if (m && o.name == draw.aliasDst)
            for (unsigned q = 0; q < entry.operandCount; ++q)
                if (std::string_view(entry.operands[q].name) == "dst") m->options(entry, d, entry.operands[q], opt);
        uint32_t rows = d.eval(o.rows), cols = d.eval(o.cols);
        switch (o.role) {
        case 'o':
            if (isTransposed(o.kind)) std::swap(rows, cols);
            a.elems.emplace(layoutOf(o.layout), isArrayCode(o.kind), d.count, rows, cols, rng, opt);
            break;
        case 'b':
        case 'r':
            a.elems.emplace(Lay::C, false, 1, rows, cols, rng, opt);
            break;
        case 'i': a.index.emplace(Lay::C, false, 1, rows, cols, rng, opt); break;
        default: break;
        }
        s.args.push_back(std::move(a));
    }
    if (m) m->fill(s, draw.data, rng);
    else fillDefault(s, draw.data, rng);
    s.bind();
    return s;
}

template <class T>
void Specimen<T>::bind()
{
    pack = ArgPack{};
    for (auto& a : args) {
        const std::string name = a.desc->name;
        switch (a.desc->role) {
        case 'o':
        case 'b':
        case 'r': a.elems->bind(pack, name); break;
        case 'i': a.index->bind(pack, name); break;
        case 'v': *static_cast<long double*>(argField(pack, name)) = a.value; break;
        case 'z': *static_cast<uint32_t*>(argField(pack, name)) = d[name]; break;
        case 'n': pack.count = d.count; break;
        }
    }
    if (!aliasDst.empty()) op(aliasDst).bind(pack, "dst");
}

#if defined(__i386__)
// Calls fn(pack) with the stack `off` bytes below a 16-byte boundary at the call
// and returns its status. The adapters are built to keep the stack as they find
// it, so the exported function meets it so.
extern "C" vorxStatus vt_call_misaligned(vorxStatus (*fn)(const ArgPack&), const ArgPack* pack, unsigned off);
__asm__(R"(
    .text
    .globl vt_call_misaligned
vt_call_misaligned:
    push %ebp
    mov %esp, %ebp
    mov 16(%ebp), %ecx
    and $-16, %esp
    sub %ecx, %esp
    sub $12, %esp
    push 12(%ebp)
    call *8(%ebp)
    mov %ebp, %esp
    pop %ebp
    ret
)");
#endif

template <class T>
vorxStatus Specimen<T>::call() const
{
#if defined(__i386__)
    if (stackOffset) {
        calledNames().insert(e->name);
        return vt_call_misaligned(e->call, &pack, stackOffset);
    }
#endif
    return vt::call(*e, pack);
}

template struct Specimen<float>;
template struct Specimen<double>;

namespace {
// scripts/test.sh --memcheck sets VORX_MEMCHECK for its run under valgrind.
bool underValgrind()
{
    static const bool set = std::getenv("VORX_MEMCHECK") != nullptr;
    return set;
}

// The checking build under clang (scripts/test.sh --sanitize) may give two NaNs of one
// payload to the x87 unit in the other order, which picks the other sign; there a
// NaN's sign is not compared. The product's bits are those of the gcc builds.
template <class T>
bool sameNaNPayload(T g, T w)
{
#ifdef __clang__
    return g != g && w != w && sameBits(std::fabs(g), std::fabs(w));
#else
    (void)g, (void)w;
    return false;
#endif
}
}  // namespace

template <class T>
std::string verify(const Model& m, Specimen<T>& s, const Null& null, bool record)
{
    const CatalogueEntry& e = *s.e;
    if (!s.aliasDst.empty()) {
        // dst is the source's storage: it holds the source's values before the call.
        Laid<T>& d = s.op("dst");
        const Laid<T>& src = s.op(s.aliasDst);
        d.fill([&](uint32_t k, uint32_t i, uint32_t j) { return src.get(k, i, j); });
    }
    const Specimen<T> in = s;
    Specimen<T> out = s;
    vorxStatus want = m.predict(in, out);
    if (!null.op.empty()) {
        void** top = static_cast<void**>(argField(s.pack, null.op));
        if (!null.entry) {
            want = vorxStatusNullPointer;
            out = in;
            *top = nullptr;
        } else {
            const Arg<T>* a = s.find(null.op);
            const Operand& operand = *a->desc;
            EntryRule rule = m.entryRule(e, operand);
            if (m.entryFollowed(e, operand, s.d, null.index)) return "";
            if (want != vorxStatusBadSize) switch (rule) {
                case EntryRule::Scan:
                    want = vorxStatusNullPointer;
                    out = in;
                    break;
                case EntryRule::PerObject:
                    if (null.index < s.d.count) {
                        Specimen<T> upTo = in;
                        upTo.d.count = m.objectsBeforeNullEntry(e, operand, null.index, s.d.count);
                        out = in;
                        vorxStatus before = upTo.d.count ? m.predict(upTo, out) : vorxStatusOk;
                        want = before != vorxStatusOk ? before : vorxStatusNullPointer;
                    }
                    break;
                case EntryRule::AsReached: {
                    want = vorxStatusNullPointer;
                    uint32_t before = 0;
                    bool known = m.writtenBefore(e, operand, null.index, before);
                    for (auto& o : out.args) {
                        if (!o.desc->out || !o.elems) continue;
                        const Laid<T>& was = *in.find(o.desc->name)->elems;
                        for (uint32_t i = 0; i < was.rows(); ++i)
                            for (uint32_t j = 0; j < was.cols(); ++j)
                                if (!known) out.leaveOpen(o.desc->name, 0, i, j);
                                else if (i * was.cols() + j >= before) o.elems->set(0, i, j, was.get(0, i, j));
                    }
                    break;
                }
                case EntryRule::Untested: return "";
                }
            Laid<T>& l = s.op(null.op);
            if (null.index < l.tableSize()) l.table()[null.index] = nullptr;
        }
    }
    vorxStatus got = s.call();
    if (record) {
        digest(got);
        for (const auto& a : s.args)
            if (a.desc->out) digest(a.index ? a.index->bytes() : a.elems ? a.elems->bytes() : std::vector<unsigned char>{});
    }
    std::string where = std::string(e.name);
    for (const auto& [n, x] : s.d.v) where += " " + n + "=" + std::to_string(x);
    if (s.d.array) where += " count=" + std::to_string(s.d.count);
    if (!null.op.empty())
        where += " null " + null.op + (null.entry ? "[" + std::to_string(null.index) + "]" : "");
    if (!s.aliasDst.empty()) where += " dst on " + s.aliasDst;
    // Under valgrind the x87 unit runs at double width and SSE arithmetic drops NaN
    // payloads: there only memory is checked where the x87 format matters, and any
    // NaN stands for any other.
    const bool memcheck = underValgrind();
    const bool values = !(memcheck && m.extendedPrecision(e));
    if (got != want && values)
        return where + ": status " + std::to_string(got) + ", expected " + std::to_string(want);
    for (size_t n = 0; n < s.args.size(); ++n) {
        Arg<T>& a = s.args[n];
        const std::string name = a.desc->name;
        if (a.index) {
            if (values && a.index->bytes() != out.args[n].index->bytes()) return where + ": " + name + " differs";
            if (!a.index->guardsIntact()) return where + ": wrote outside " + name;
            continue;
        }
        if (!a.elems) continue;
        if (!a.elems->guardsIntact()) return where + ": wrote outside " + name;
        bool asDst = name == "dst" && !s.aliasDst.empty();
        bool aliased = name == s.aliasDst;
        if (aliased || (a.desc->out && !values)) continue;  // aliased: holds dst's results
        const Laid<T>& actual = asDst ? s.op(s.aliasDst) : *a.elems;
        const Laid<T>& expect = *out.args[n].elems;
        const auto& open = out.open[name];
        for (uint32_t k = 0; k < expect.count(); ++k)
            for (uint32_t i = 0; i < expect.rows(); ++i)
                for (uint32_t j = 0; j < expect.cols(); ++j) {
                    if (open.count((static_cast<size_t>(k) * expect.rows() + i) * expect.cols() + j)) continue;
                    T g = actual.get(k, i, j), w = expect.get(k, i, j);
                    if (!sameBits(g, w) && !(memcheck && g != g && w != w) && !sameNaNPayload(g, w))
                        return where + ": " + name + " object " + std::to_string(k) + " (" + std::to_string(i) +
                               ", " + std::to_string(j) + ") is " + bitsOf(g) + ", expected " + bitsOf(w);
                }
    }
    return "";
}

template std::string verify<float>(const Model&, Specimen<float>&, const Null&, bool);
template std::string verify<double>(const Model&, Specimen<double>&, const Null&, bool);

namespace {
sigjmp_buf* gFaultJump;
void onFault(int) { siglongjmp(*gFaultJump, 1); }

// gcc says __SANITIZE_ADDRESS__, clang 14 only __has_feature.
#if defined(__SANITIZE_ADDRESS__)
#define VT_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VT_ASAN 1
#endif
#endif
#ifdef VT_ASAN
constexpr bool kAddressSanitizer = true;
#else
constexpr bool kAddressSanitizer = false;
#endif

// A call that may fault, tried in a child first (its reports silenced) and made here
// only where it came through.
bool faultsInAChild(const std::function<void()>& f)
{
    if (fork() == 0) {
        dup2(open("/dev/null", O_WRONLY), 2);
        f();
        _exit(0);
    }
    int status = 0;
    wait(&status);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) return true;
    f();
    return false;
}
}  // namespace

// Under the sanitizers a followed null pointer stops the process before it faults,
// and under valgrind a fault on purpose counts as an error of the run: there the
// call is tried in a child.
bool faults(const std::function<void()>& f)
{
    return kAddressSanitizer ? faultsInAChild(f) : faultsOnAProtectedPage(f);
}

bool faultsOnAProtectedPage(const std::function<void()>& f)
{
    if (underValgrind()) return faultsInAChild(f);
    struct sigaction sa = {}, oldSegv, oldBus;
    sa.sa_handler = onFault;
    sigemptyset(&sa.sa_mask);
    sa.sa_flags = SA_NODEFER;
    sigaction(SIGSEGV, &sa, &oldSegv);
    sigaction(SIGBUS, &sa, &oldBus);
    sigjmp_buf jump;
    gFaultJump = &jump;
    bool hit = sigsetjmp(jump, 1) != 0;
    if (!hit) f();
    sigaction(SIGSEGV, &oldSegv, nullptr);
    sigaction(SIGBUS, &oldBus, nullptr);
    return hit;
}

namespace {
template <class T>
bool objectMatches(const Laid<T>& got, const Laid<T>& want, uint32_t k)
{
    std::vector<T> a = got.object(k), b = want.object(k);
    return std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0;
}
}  // namespace

template <class T>
Case<T>::Case(const CatalogueEntry& e, const Dims& d, unsigned seed, Data data)
    : s(Specimen<T>::make(e, d, Draw{data, seed})), before(s), want(s)
{
    status = modelFor(e)->predict(before, want);
}

template <class T>
bool Case<T>::predicted(const std::string& name, uint32_t k, uint32_t i, uint32_t j) const
{
    return sameBits(s.op(name).get(k, i, j), want.op(name).get(k, i, j));
}

template <class T>
bool Case<T>::untouched(const std::string& name, uint32_t k, uint32_t i, uint32_t j) const
{
    return sameBits(s.op(name).get(k, i, j), before.op(name).get(k, i, j));
}

template <class T>
bool Case<T>::predicted(const std::string& name, uint32_t k) const
{
    return objectMatches(s.op(name), want.op(name), k);
}

template <class T>
bool Case<T>::untouched(const std::string& name, uint32_t k) const
{
    return objectMatches(s.op(name), before.op(name), k);
}

template struct Case<float>;
template struct Case<double>;

std::string verifyEntry(const CatalogueEntry& e, const Dims& d, const Draw& draw, const Null& null)
{
    // Results of ordinary numbers go into the digest that both builds must share
    // (NaN payloads under the emulator follow its own rule; the stack test runs in
    // one build only).
    const Model* m = modelFor(e);
    if (!m) return std::string(e.name) + ": no model";
    bool record = draw.data != Data::Special && draw.stackOffset == 0 && m->sameOnEveryMachine(e);
    if (isF32(e)) {
        auto s = Specimen<float>::make(e, d, draw);
        return verify(*m, s, null, record);
    }
    auto s = Specimen<double>::make(e, d, draw);
    return verify(*m, s, null, record);
}

}  // namespace vt
