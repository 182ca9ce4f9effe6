// Element-wise arrays on operands that lie as one run (Contiguous objects with no gap,
// Pointer tables whose elements' stretches follow each other), where Add and Sub take
// one pass over the run: every array function of the two families, counts around the
// four-lane and pattern boundaries, random and special data (NaN payloads), and in
// place, against the family's model (bits, guards, nothing written outside dst).
#include <gtest/gtest.h>

#include "harness.h"

namespace {

TEST(DenseRuns, ElementWiseArraysOnOneRun)
{
    unsigned seed = 3;
    for (const char* fam : {"Add", "Sub"})
        for (const auto* e : vt::entries(fam, [](const CatalogueEntry& x) {
                 std::string_view lay(x.layout);
                 return std::string_view(x.code).find('a') != std::string_view::npos && (lay == "" || lay == "P");
             })) {
            // In place: dst the first source, where that is a plain array.
            const std::string first = vt::splitCodes(e->code)[0];
            const bool canInPlace = vt::isArrayCode(first) && !vt::isTransposed(first);
            for (uint32_t count : {1u, 2u, 3u, 4u, 5u, 7u, 13u})
                for (bool inPlace : {false, true}) {
                    if (inPlace && !canInPlace) continue;
                    vt::Dims d = vt::dimsOf(*e, 5, count);
                    if (!e->size && d.v.count("height")) d.set("height", 3);
                    vt::Draw draw{count % 2 ? vt::Data::Special : vt::Data::Random, seed++};
                    for (const char* n : {"src", "src1", "src2", "dst"}) draw.options[n].tight = draw.options[n].run = true;
                    if (inPlace) draw.aliasDst = e->operands[0].name;
                    EXPECT_EQ(vt::verifyEntry(*e, d, draw), "")
                        << e->name << " count " << count << (inPlace ? " in place" : "");
                }
        }
}

}  // namespace
