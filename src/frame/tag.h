// A family's tag as the generated wrappers name it: `struct X : By<Impl> {}` runs
// every function of X through Impl<T, N, L> (base.h's Body).
#pragma once

#include "base.h"

namespace vorx {

template <template <class, int, Lay> class B>
struct By {
    template <class T, int N, Lay L>
    using Impl = B<T, N, L>;
};

}  // namespace vorx
