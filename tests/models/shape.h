// What the models of the functionals and the moves share about a catalogue entry.
#pragma once

#include "harness.h"

namespace vt::shape {

inline bool is(const CatalogueEntry& e, std::string_view family) { return family == e.family; }
inline bool pointer(const CatalogueEntry& e) { return e.layout[0] == 'P'; }
// The 32f fixed sizes whose rows lie E bytes apart (Contiguous and List layout):
// where the packed and the tiled schemes are.
inline bool fixedAdjacent32(const CatalogueEntry& e)
{
    std::string_view l = e.layout;
    return isF32(e) && e.size && (l == "" || l == "L");
}

}  // namespace vt::shape
