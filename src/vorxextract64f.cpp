// Extract of any operand into a dense buffer, 64f.
#include "shape/extract.h"

namespace vorx {

// The 64f vector in Pointer layout checks nothing, where its 32f twin tests src,
// dst and len: a null pointer is followed, a zero len moves nothing and returns 0.
template <>
struct Body<tag::Extract_v, double, 0, Lay::P> {
    template <class S>
    static vorxStatus run(S s, double* d, uint32_t len)
    {
        extract::dense(s, d, len, 1, 1);
        return kOk;
    }
};

}  // namespace vorx

#include "vorxextract64f.inc"
