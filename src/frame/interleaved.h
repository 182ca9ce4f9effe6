// The frame of checks for the families that scan their Pointer tables entry by entry
// across operands: entry e of every table in argument order, e upward, so a null in
// a later table is met before the rest of an earlier one is read. The steps are
// those of checks.h; only the scan and the object loop are given separately, since
// some families take their objects in groups.
#pragma once

#include "checks.h"

namespace vorx {

template <class V>
bool entryOk(const V& v, uint32_t n)
{
    if constexpr (IsElemTable<V>::value) return v.entry(n);
    return true;
}

// Step 3, interleaved: entry n of each table of the call, then entry n + 1.
template <class... O>
bool interleavedOk(uint32_t entries, const O&... o)
{
    for (uint32_t n = 0; n < entries; ++n)
        if (!(entryOk(o, n) && ...)) return false;
    return true;
}

// Steps 1 to 4 with the interleaved scan; `objects()` then runs step 5 and returns
// the status. `beforeCount` loads what a packed form reads ahead of the count test.
template <class Objects, class Before, class... O>
vorxStatus interleavedCall(bool sizesBad, uint32_t entries, uint32_t count, Before beforeCount,
                           Objects objects, const O&... o)
{
    if (anyNull(o...)) return kNull;
    if (sizesBad) return kBadSize;
    if (!interleavedOk(entries, o...)) return kNull;
    beforeCount();
    if (count == 0) return kOk;
    return objects();
}

}  // namespace vorx
