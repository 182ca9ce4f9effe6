// The harness: any catalogue entry laid out and called from its row alone, and a
// model of each family that says what the call must give. The table-driven tests,
// the thread test and the fuzzer all go through here, so a family joins them all by
// its catalogue rows and its model.
//
// A Specimen holds one argument per operand of the entry (catalogue_calls.inc lists
// them with their roles, kinds, layouts and shapes): a Laid operand in its layout,
// an index array, an element buffer, scalar results, a value, the sizes and count.
// A Model predicts, from a snapshot of the specimen, the status and every output
// element (or leaves an element open); `verify` calls the function and compares,
// bit for bit, with the guards of every operand and the sources unchanged.
#pragma once

#include <map>
#include <memory>
#include <optional>

#include "fixture.h"

namespace vt {

// The sizes of one call, by the names of the argument list; `objects` is the count
// of an array call and 1 otherwise. A fixed-size entry has every size at its size.
struct Dims {
    std::map<std::string, uint32_t> v;
    uint32_t count = 1;
    bool array = false;
    uint32_t operator[](const std::string& n) const;
    void set(const std::string& n, uint32_t x) { v[n] = x; }
    uint32_t eval(const char* expr) const;  // "a*b+c": names, numbers, * and +
};

enum class Data { Random, Dominant, Special };

// What a run draws or fixes besides the sizes: data, strides, aliasing, guards.
struct Draw {
    Data data = Data::Random;
    unsigned seed = 1;
    std::map<std::string, Options> options;  // per operand name
    std::string aliasDst;                    // a source whose storage dst shares
    unsigned stackOffset = 0;                // i386: the call made with the stack this far off 16
};

template <class T>
struct Arg {
    const Operand* desc = nullptr;         // its row in the entry's operand list
    std::optional<Laid<T>> elems;          // operands, buffers, results
    std::optional<Laid<uint32_t>> index;   // index arrays
    T value = 0;                           // values
};

template <class T>
struct Specimen {
    using Elem = T;
    const CatalogueEntry* e = nullptr;
    Dims d;
    std::vector<Arg<T>> args;
    ArgPack pack;
    std::string aliasDst;
    unsigned stackOffset = 0;
    std::map<std::string, std::set<size_t>> open;  // output elements a prediction leaves open

    bool has(const std::string& name) const { return find(name) != nullptr; }
    const Arg<T>* find(const std::string& name) const;
    Arg<T>& arg(const std::string& name) { return const_cast<Arg<T>&>(*find(name)); }
    const Arg<T>& arg(const std::string& name) const { return *find(name); }
    Laid<T>& op(const std::string& name) { return *arg(name).elems; }
    const Laid<T>& op(const std::string& name) const { return *arg(name).elems; }
    Laid<uint32_t>& idx(const std::string& name) { return *arg(name).index; }
    const Laid<uint32_t>& idx(const std::string& name) const { return *arg(name).index; }
    T value(const std::string& name) const { return arg(name).value; }
    uint32_t objects() const { return d.array ? d.count : 1; }

    // Element (i, j) of the operation's operand `name` for object k: a transposed
    // kind is read the other way round, a single operand is the same for every k.
    T in(const std::string& name, uint32_t k, uint32_t i, uint32_t j) const;
    bool transposed(const std::string& name) const;
    bool isArray(const std::string& name) const;
    // Marks an output element as free: the prediction does not say what it holds.
    void leaveOpen(const std::string& name, uint32_t k, uint32_t i, uint32_t j);
    void leaveAllOpen(const std::string& name);

    // Builds every argument for `entry` with the sizes `d`, then binds the pack.
    static Specimen make(const CatalogueEntry& entry, const Dims& d, const Draw& draw);
    void bind();
    vorxStatus call() const;
};

// How a family meets a null entry in a table or list of operand `op`.
enum class EntryRule {
    Scan,       // every entry compared before any work (and before the count test)
    PerObject,  // list entries of object k just before object k
    AsReached,  // single-object Pointer: entries of an element just before it
    Untested,   // followed as an address: never made null by the harness
};

bool isF32(const CatalogueEntry& e);

class Model {
public:
    virtual ~Model() = default;
    virtual bool covers(const CatalogueEntry& e) const = 0;
    // The size sets the table-driven test runs (the fuzzer draws its own).
    virtual std::vector<Dims> cases(const CatalogueEntry& e) const;
    // Makes drawn sizes fit the family (conformity, minimum sizes).
    virtual void fitDims(const CatalogueEntry&, Dims&) const {}
    // Per operand: reads the function may make past it, planted table entries.
    virtual void options(const CatalogueEntry&, const Dims&, const Operand&, Options&) const {}
    virtual EntryRule entryRule(const CatalogueEntry& e, const Operand& op) const;
    // A single-object Pointer call that meets null entry `entry` of `op`: how many
    // result elements (row-major) stand written before it, if the family says.
    virtual bool writtenBefore(const CatalogueEntry&, const Operand&, uint32_t, uint32_t&) const { return false; }
    // Whether results depend on the x87 unit's extended format (not compared under
    // valgrind, which runs that unit at double width).
    virtual bool extendedPrecision(const CatalogueEntry& e) const { return !isF32(e); }
    // A List-layout array call of `count` objects that meets null list entry `entry`:
    // how many objects stand written before it (all before it, but where entries are
    // tested a block of objects at a time).
    virtual uint32_t objectsBeforeNullEntry(const CatalogueEntry&, const Operand&, uint32_t entry, uint32_t) const { return entry; }
    // Whether the results are the same on every machine. They are not where a path
    // takes an estimate instruction (rsqrtps, rcpps), which the emulator computes
    // exactly: such results stay out of the digest the two builds compare.
    virtual bool sameOnEveryMachine(const CatalogueEntry&) const { return true; }
    // An entry of a table the family scans that it reads without testing: a null
    // there is followed as an address, so the harness never plants one.
    virtual bool entryFollowed(const CatalogueEntry&, const Operand&, const Dims&, uint32_t) const { return false; }
    // Whether a null top-level pointer is refused (-8) rather than followed.
    virtual bool nullChecked(const CatalogueEntry&, const Operand&) const { return true; }
    // Operands whose storage dst may share (same layout and strides).
    virtual bool inPlace(const CatalogueEntry&, const std::string&) const { return false; }
    // The single operand of an array call that is read ahead of the count test.
    virtual bool readsAhead(const CatalogueEntry&, const std::string&) const { return false; }
    // Data of the sources; the default is random, or dominant square matrices.
    virtual void fill(Specimen<float>& s, Data data, std::mt19937& rng) const;
    virtual void fill(Specimen<double>& s, Data data, std::mt19937& rng) const;
    // The status, and `out` (a copy of `in`) with every output element as it must stand.
    virtual vorxStatus predict(const Specimen<float>& in, Specimen<float>& out) const = 0;
    virtual vorxStatus predict(const Specimen<double>& in, Specimen<double>& out) const = 0;
};

// A model written once as templates `fits`, `run<T>`: the virtual calls forward.
template <class M>
class ModelOf : public Model {
public:
    vorxStatus predict(const Specimen<float>& in, Specimen<float>& out) const override
    {
        return static_cast<const M*>(this)->template run<float>(in, out);
    }
    vorxStatus predict(const Specimen<double>& in, Specimen<double>& out) const override
    {
        return static_cast<const M*>(this)->template run<double>(in, out);
    }
};

// A model of a family of sums of products: its random sources have mixed
// magnitudes (2^-6 to 2^6), so that the order and the width of every sum show.
template <class M>
class MixedModelOf : public ModelOf<M> {
public:
    void fill(Specimen<float>& s, Data data, std::mt19937& rng) const override { mixed(s, data, rng); }
    void fill(Specimen<double>& s, Data data, std::mt19937& rng) const override { mixed(s, data, rng); }

private:
    template <class T>
    void mixed(Specimen<T>& s, Data data, std::mt19937& rng) const
    {
        Model::fill(s, data, rng);
        if (data != Data::Random) return;
        for (auto& a : s.args)
            if (a.elems && !a.desc->out)
                a.elems->fill([&](uint32_t, uint32_t, uint32_t) {
                    return randomValue<T>(rng, static_cast<int>(rng() % 13) - 6);
                });
    }
};

const Model* modelFor(const CatalogueEntry& e);
struct RegisterModel {
    explicit RegisterModel(const Model* m);
};

// What is made null in a run: nothing, a top-level pointer, or entry `index` of the
// table or list of an operand.
struct Null {
    std::string op;
    bool entry = false;
    uint32_t index = 0;
};

// A specimen with the model's prediction of its call, for the tests of single
// behaviours: change the specimen's pack, call, and compare objects or elements of
// an output with the prediction or with what they held before.
template <class T>
struct Case {
    Specimen<T> s, before, want;
    vorxStatus status;
    Case(const CatalogueEntry& e, const Dims& d, unsigned seed, Data data = Data::Random);
    bool predicted(const std::string& name, uint32_t k, uint32_t i, uint32_t j) const;
    bool untouched(const std::string& name, uint32_t k, uint32_t i, uint32_t j) const;
    bool predicted(const std::string& name, uint32_t k) const;  // a whole object
    bool untouched(const std::string& name, uint32_t k) const;
};

// Lays the entry out, predicts, calls and compares. Returns "" or the first
// difference, in words.
// Folds the status and outputs into the digest both builds must share when `record`.
template <class T>
std::string verify(const Model& m, Specimen<T>& s, const Null& null = {}, bool record = false);
std::string verifyEntry(const CatalogueEntry& e, const Dims& d, const Draw& draw, const Null& null = {});

// The default size sets: fixed sizes as they are; run-time sizes 1, 2, 3 and 7 for
// every size, and width and height apart both ways.
std::vector<Dims> defaultCases(const CatalogueEntry& e);
Dims dimsOf(const CatalogueEntry& e, uint32_t n, uint32_t count);

// Whether f faults (SIGSEGV or SIGBUS); the fault is caught and f abandoned.
bool faults(const std::function<void()>& f);
// The same where f can meet nothing but a protected page, which the sanitizers let
// fault like any other run: tried in process under them too.
bool faultsOnAProtectedPage(const std::function<void()>& f);

// Random data of a type, as the models draw it.
template <class T>
T specialValue(std::mt19937& rng, unsigned payload);

bool isF32(const CatalogueEntry& e);
bool isArrayCall(const CatalogueEntry& e);
const CatalogueEntry& byName(std::string_view name);

}  // namespace vt
