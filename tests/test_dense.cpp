// Element-wise arrays on operands that lie as one run (Contiguous objects with no gap,
// Pointer tables whose elements' stretches follow each other), where Add and Sub take
// one pass over the run, and on objects that are each a run but lie apart (List, or
// Contiguous with gaps), where the packed forms take one pass per object: every array
// function of the two families, counts around the four-lane and pattern boundaries,
// random and special data (NaN payloads), and in place, against the family's model
// (bits, guards, nothing written outside dst). Contiguous and Strided arrays whose
// operands share their strides step one offset for all of them.
#include <gtest/gtest.h>

#include "harness.h"

namespace {

TEST(DenseRuns, ElementWiseArraysOnRuns)
{
    unsigned seed = 3;
    for (const char* fam : {"Add", "Sub"})
        for (const auto* e : vt::entries(fam, [](const CatalogueEntry& x) {
                 std::string_view lay(x.layout);
                 return std::string_view(x.code).find('a') != std::string_view::npos &&
                        (lay == "" || lay == "P" || lay == "L");
             })) {
            // In place: dst the first source, where that is a plain array.
            const std::string first = vt::splitCodes(e->code)[0];
            const bool canInPlace = vt::isArrayCode(first) && !vt::isTransposed(first);
            // Apart: rows with no gap, objects apart (a List is always apart).
            const std::string_view lay(e->layout);
            for (uint32_t count : {1u, 2u, 3u, 4u, 5u, 7u, 13u})
                for (int variant = 0; variant < 4; ++variant) {
                    const bool inPlace = variant & 1, apart = variant & 2;
                    if ((inPlace && !canInPlace) || (apart && lay == "P") || (!apart && lay == "L")) continue;
                    vt::Dims d = vt::dimsOf(*e, 5, count);
                    if (!e->size && d.v.count("height")) d.set("height", 3);
                    vt::Draw draw{count % 2 ? vt::Data::Special : vt::Data::Random, seed++};
                    for (const char* n : {"src", "src1", "src2", "dst"}) {
                        draw.options[n].tight = !apart;
                        draw.options[n].tightRows = draw.options[n].run = true;
                    }
                    if (inPlace) draw.aliasDst = e->operands[0].name;
                    EXPECT_EQ(vt::verifyEntry(*e, d, draw), "") << e->name << " count " << count
                                                                << (inPlace ? " in place" : "") << (apart ? " apart" : "");
                }
        }
}

// Strides of either sign, shared by every array operand (the single vector or matrix
// of a call keeps its own): room for six rows of six elements, elements apart in
// Strided layout, objects apart or overlapping by their order in memory.
TEST(DenseRuns, OperandsThatStepAlike)
{
    unsigned seed = 11;
    for (const char* fam : {"Add", "Sub", "Mul"})
        for (const auto* e : vt::entries(fam, [](const CatalogueEntry& x) {
                 std::string_view lay(x.layout), code(x.code);
                 return code.find('a') != code.npos && (code.back() == 'c' || x.family != std::string_view("Mul")) &&
                        (lay == "" || lay == "S2");
             }))
            for (int32_t sign : {1, -1})
                for (uint32_t count : {1u, 3u, 6u}) {
                    const int32_t E = e->type == std::string_view("64f") ? 8 : 4;
                    const int32_t es = std::string_view(e->layout) == "S2" ? 2 * E + 4 : E;
                    vt::Dims d = vt::dimsOf(*e, 5, count);
                    vt::Draw draw{count == 3 ? vt::Data::Special : vt::Data::Random, seed++};
                    for (const char* n : {"src", "src1", "src2", "dst"}) {
                        vt::Options& o = draw.options[n];
                        o.explicitStrides = true;
                        o.es = es, o.rs = 6 * es + 8, o.os = sign * (6 * o.rs + 4);
                    }
                    EXPECT_EQ(vt::verifyEntry(*e, d, draw), "") << e->name << " count " << count << " sign " << sign;
                }
}

// Transposed Pointer arrays whose tables are one run move each element's stretch of
// objects whole: square sizes (fixed and run-time), a non-square run-time call that
// keeps the object loop, counts around the four-lane boundary, special data (64f
// signalling NaNs arrive quiet, as in the object loop).
TEST(DenseRuns, TransposedPointerArraysOnRuns)
{
    unsigned seed = 5;
    for (const auto* e : vt::entries("Transpose", [](const CatalogueEntry& x) {
             return std::string_view(x.code) == "ma" && std::string_view(x.layout) == "P";
         }))
        for (uint32_t count : {1u, 3u, 4u, 5u, 13u})
            for (uint32_t width : {4u, 3u}) {
                if (e->size && width != 4) continue;
                vt::Dims d = vt::dimsOf(*e, 4, count);
                if (!e->size) d.set("width", width);
                vt::Draw draw{count % 2 ? vt::Data::Special : vt::Data::Random, seed++};
                for (const char* n : {"src", "dst"}) draw.options[n].run = true;
                EXPECT_EQ(vt::verifyEntry(*e, d, draw), "") << e->name << " count " << count << " width " << width;
            }
}

}  // namespace
