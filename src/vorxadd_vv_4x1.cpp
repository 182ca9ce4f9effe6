// Vector addition of two vectors, length 4: 32f and 64f, all layouts.
#include "elementwise/vector.h"

namespace vorx {

// Alone among the fixed-size forms, vorxAdd_vv_32f_4x1 chooses its moves by
// alignment: with all three pointers on 16 bytes one aligned load per source and
// one aligned store, otherwise two 64-bit halves each.
template <>
struct Body<tag::Add_vv, float, 4, Lay::C> {
    static vorxStatus run(Direct<const float> a, Direct<const float> b, Direct<float> d, uint32_t)
    {
        if (anyNull(a, b, d)) return kNull;
        if (sse::aligned16(a.x) && sse::aligned16(b.x) && sse::aligned16(d.x))
            sse::store4a(d.x, AddOp::p(sse::load4a(a.x), sse::load4a(b.x)));
        else
            sse::store4h(d.x, AddOp::p(sse::load4h(a.x), sse::load4h(b.x)));
        return kOk;
    }
};

}  // namespace vorx

#include "vorxadd_vv_4x1.inc"
