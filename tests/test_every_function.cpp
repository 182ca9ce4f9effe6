// Every function of the catalogue through the harness: against its family's model
// in every size set the model names, with random, dominant and special data (NaNs
// whose payloads name their operand, infinities, zeros, denormals); the frame's null
// pointers and entries; in place where the family promises it; the single operand
// read ahead of the count test; a caller's stack aligned to 4 bytes only; and eight
// threads at once.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "harness.h"

namespace {

using vt::Data;
using vt::Dims;
using vt::Draw;

// Runs `check` over every entry with its model; a failure names the entry and stops
// after a few.
template <class F>
void everyEntry(F check)
{
    int failures = 0;
    for (const auto& e : kCatalogue) {
        const vt::Model* m = vt::modelFor(e);
        if (!m) {
            ADD_FAILURE() << e.name << " has no model";
            continue;
        }
        std::string why = check(e, *m);
        if (!why.empty()) {
            ADD_FAILURE() << why;
            if (++failures == 20) return;
        }
    }
}

// A size set in the middle of the model's: the largest count, a run-time size of 3.
Dims typical(const CatalogueEntry& e, const vt::Model& m)
{
    Dims best = m.cases(e).front();
    for (const Dims& d : m.cases(e))
        if (d.count > best.count || (d.count == best.count && d.v == vt::dimsOf(e, 3, d.count).v)) best = d;
    return best;
}

TEST(EveryFunction, MatchesItsModel)
{
    unsigned seed = 1;
    everyEntry([&](const CatalogueEntry& e, const vt::Model& m) -> std::string {
        for (const Dims& d : m.cases(e)) {
            std::string why = vt::verifyEntry(e, d, Draw{Data::Random, seed++});
            if (!why.empty()) return why;
        }
        for (Data data : {Data::Dominant, Data::Special}) {
            std::string why = vt::verifyEntry(e, typical(e, m), Draw{data, seed++});
            if (!why.empty()) return why;
        }
        return "";
    });
}

// Null pointers first (also with a zero size), then zero sizes, then a null entry in
// each table or list the family tests, at count 0 and at count 3.
TEST(EveryFunction, NullPointersZeroSizesAndNullEntries)
{
    unsigned seed = 100;
    everyEntry([&](const CatalogueEntry& e, const vt::Model& m) -> std::string {
        Dims d = typical(e, m);
        for (unsigned n = 0; n < e.operandCount; ++n) {
            const Operand& o = e.operands[n];
            if (o.role == 'z' && !e.size) {
                Dims z = d;
                z.set(o.name, 0);
                std::string why = vt::verifyEntry(e, z, Draw{Data::Random, seed++});
                if (!why.empty()) return why;
            }
            if (o.role != 'o' && o.role != 'b' && o.role != 'r' && o.role != 'i') continue;
            if (!m.nullChecked(e, o)) continue;
            Dims z = d;
            for (auto& [name, value] : z.v) value = e.size ? value : 0;
            for (const Dims& at : {d, z}) {
                std::string why = vt::verifyEntry(e, at, Draw{Data::Random, seed++}, vt::Null{o.name});
                if (!why.empty()) return why;
            }
            if (o.role != 'o' || m.entryRule(e, o) == vt::EntryRule::Untested) continue;
            vt::Lay l = vt::layoutOf(o.layout);
            bool list = l == vt::Lay::L || l == vt::Lay::LS2;
            if (!list && l != vt::Lay::P && l != vt::Lay::PS2) continue;
            for (uint32_t count : {0u, 3u}) {
                Dims c = d;
                if (c.array) c.count = count;
                m.fitDims(e, c);
                uint32_t entries = list ? c.count : c.eval(o.rows) * c.eval(o.cols);
                if (entries == 0) continue;
                for (uint32_t at : {entries - 1, list ? 1u : entries / 2}) {
                    std::string why = vt::verifyEntry(e, c, Draw{Data::Random, seed++},
                                                      vt::Null{o.name, true, std::min(at, entries - 1)});
                    if (!why.empty()) return why;
                }
            }
        }
        return "";
    });
}

TEST(EveryFunction, InPlaceWhereTheFamilyPromisesIt)
{
    unsigned seed = 200;
    int checked = 0;
    everyEntry([&](const CatalogueEntry& e, const vt::Model& m) -> std::string {
        for (unsigned n = 0; n < e.operandCount; ++n) {
            const Operand& o = e.operands[n];
            if (o.role != 'o' || o.out || !m.inPlace(e, o.name)) continue;
            Draw draw{Data::Random, seed++};
            draw.aliasDst = o.name;
            std::string why = vt::verifyEntry(e, typical(e, m), draw);
            if (!why.empty()) return why;
            ++checked;
        }
        return "";
    });
    EXPECT_GT(checked, 1000);
}

// An array call at count 0 with its single source on an unreadable page faults
// exactly where the family loads that source ahead of the count test.
TEST(EveryFunction, SingleSourceReadAheadOfTheCountTestWhereTheFamilySaysSo)
{
    unsigned seed = 300;
    int ahead = 0;
    everyEntry([&](const CatalogueEntry& e, const vt::Model& m) -> std::string {
        if (!vt::isArrayCall(e)) return "";
        for (unsigned n = 0; n < e.operandCount; ++n) {
            const Operand& o = e.operands[n];
            if (o.role != 'o' || o.out || vt::isArrayCode(o.kind)) continue;
            Dims d = typical(e, m);
            d.count = 0;
            m.fitDims(e, d);
            if (d.count) continue;
            Draw draw{Data::Random, seed++};
            draw.options[o.name].guardPage = true;
            bool read;
            auto run = [&](auto s) {
                s.op(o.name).protect(true);
                read = vt::faultsOnAProtectedPage([&] { s.call(); });
                s.op(o.name).protect(false);
            };
            if (vt::isF32(e)) run(vt::Specimen<float>::make(e, d, draw));
            else run(vt::Specimen<double>::make(e, d, draw));
            bool want = m.readsAhead(e, o.name);
            ahead += want;
            if (read != want)
                return std::string(e.name) + (want ? " does not read " : " reads ") + o.name + " at count 0";
        }
        return "";
    });
    EXPECT_GT(ahead, 100);
}

#if defined(__i386__)
// Every function, with the caller's stack 0, 4, 8 and 12 bytes off 16: the i386
// calling convention promises 4.
TEST(EveryFunction, AnyFourByteAlignedStack)
{
    unsigned seed = 400;
    everyEntry([&](const CatalogueEntry& e, const vt::Model& m) -> std::string {
        for (unsigned off : {4u, 8u, 12u}) {
            Draw draw{Data::Random, seed++};
            draw.stackOffset = off;
            std::string why;
            if (vt::faults([&] { why = vt::verifyEntry(e, typical(e, m), draw); }))
                return std::string(e.name) + " faults with the stack " + std::to_string(off) + " bytes off";
            if (!why.empty()) return why + " (stack " + std::to_string(off) + " bytes off)";
        }
        return "";
    });
}
#endif

// Eight threads call every function at once, each in its own order, on operands of
// its own but with the sources of one shared specimen, for several rounds; every
// result equals the one of a call made alone.
TEST(EveryFunction, EightThreadsAtOnce)
{
    struct Alone {
        const CatalogueEntry* e;
        Dims d;
        unsigned seed;
        vorxStatus status;
        std::vector<std::vector<unsigned char>> out;
    };
    auto outputs = [](const auto& s) {
        std::vector<std::vector<unsigned char>> out;
        for (const auto& a : s.args)
            if (a.desc->out) out.push_back(a.index ? a.index->bytes() : a.elems ? a.elems->bytes() : std::vector<unsigned char>{});
        return out;
    };
    std::vector<Alone> alone;
    std::vector<vt::Specimen<float>> shared32;
    std::vector<vt::Specimen<double>> shared64;
    std::vector<size_t> sharedAt;
    unsigned seed = 500;
    for (const auto& e : kCatalogue) {
        const vt::Model* m = vt::modelFor(e);
        if (!m) continue;
        Alone a{&e, typical(e, *m), seed++, 0, {}};
        auto once = [&](auto s, auto& keep) {
            a.status = s.call();
            a.out = outputs(s);
            sharedAt.push_back(keep.size());
            keep.push_back(decltype(s)::make(e, a.d, Draw{Data::Random, a.seed}));
        };
        if (vt::isF32(e)) once(vt::Specimen<float>::make(e, a.d, Draw{Data::Random, a.seed}), shared32);
        else once(vt::Specimen<double>::make(e, a.d, Draw{Data::Random, a.seed}), shared64);
        alone.push_back(std::move(a));
    }
    constexpr int kThreads = 8, kRounds = 3;
    std::atomic<int> differences{0};
    std::vector<std::string> first(kThreads);
    auto worker = [&](int t) {
        std::vector<uint32_t> order(alone.size());
        for (uint32_t n = 0; n < order.size(); ++n) order[n] = n;
        std::mt19937 rng(static_cast<unsigned>(t) + 1);
        vt::shuffle(order, rng);
        for (uint32_t n : order) {
            const Alone& a = alone[n];
            auto run = [&](auto s, const auto& sources) {
                for (const auto& arg : sources.args)
                    if (!arg.desc->out && arg.elems) const_cast<vt::Laid<typename decltype(s)::Elem>&>(*arg.elems).bind(s.pack, arg.desc->name);
                const auto before = s;  // outputs as they stand before every round
                for (int r = 0; r < kRounds; ++r) {
                    for (size_t q = 0; q < s.args.size(); ++q) {
                        auto& arg = s.args[q];
                        if (!arg.desc->out) continue;
                        if (arg.elems) arg.elems->fill([&](uint32_t k, uint32_t i, uint32_t j) { return before.args[q].elems->get(k, i, j); });
                        if (arg.index) arg.index->fill([&](uint32_t k, uint32_t i, uint32_t j) { return before.args[q].index->get(k, i, j); });
                    }
                    vorxStatus st = s.call();
                    if (st != a.status || outputs(s) != a.out) {
                        if (differences++ == 0 || first[t].empty()) first[t] = a.e->name;
                        return;
                    }
                }
            };
            if (vt::isF32(*a.e)) run(vt::Specimen<float>::make(*a.e, a.d, Draw{Data::Random, a.seed}), shared32[sharedAt[n]]);
            else run(vt::Specimen<double>::make(*a.e, a.d, Draw{Data::Random, a.seed}), shared64[sharedAt[n]]);
        }
    };
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) threads.emplace_back(worker, t);
    for (auto& th : threads) th.join();
    for (const auto& f : first) EXPECT_TRUE(f.empty()) << f << " differs when called from eight threads";
    EXPECT_EQ(differences.load(), 0);
}

}  // namespace
