// Matrix functionals and moves: Frobenius norms and traces of arrays, transposes in
// three layouts, and a copy from a list of matrices to a strided array.
#include "harness.h"
#include "peers/shape.h"

#include <vorx.h>

#include <cmath>

namespace {
using namespace vb;

template <class T, int N> Op frobNorm(const char* id, const char* title, Run vorx) {
    Op op;
    op.id = id;
    op.title = title;
    op.operands = {{Role::In, elemOf<T>(), N, N}, {Role::Out, elemOf<T>(), 1, 1}};
    op.tol = 8;  // N*N roundings of a sum of squares, and an estimated root
    op.reference = [](const Ctx& c, std::size_t k, long double* out) {
        long double s = 0;
        for (int i = 0; i < N; ++i)
            for (int j = 0; j < N; ++j) s += static_cast<long double>(c.a[0].at<T>(k, i, j)) * c.a[0].at<T>(k, i, j);
        out[0] = std::sqrt(s);
    };
    op.kernel("plain -O2", Lay::C, [](const Ctx& c) { plain_O2::frobNorm<T, N>(c.p<T>(0), c.p<T>(1), c.n); })
      .kernel("plain -O3", Lay::C, [](const Ctx& c) { plain_O3::frobNorm<T, N>(c.p<T>(0), c.p<T>(1), c.n); })
      .kernel("Eigen", Lay::C, [](const Ctx& c) { eigen_peer::frobNorm<T, N>(c.p<T>(0), c.p<T>(1), c.n); })
      .kernel("vorx", Lay::C, std::move(vorx));
    return op;
}

template <class T, int N> Op trace(const char* id, const char* title, Run vorx) {
    Op op;
    op.id = id;
    op.title = title;
    op.operands = {{Role::In, elemOf<T>(), N, N}, {Role::Out, elemOf<T>(), 1, 1}};
    op.tol = N;
    op.reference = [](const Ctx& c, std::size_t k, long double* out) {
        out[0] = 0;
        for (int i = 0; i < N; ++i) out[0] += c.a[0].at<T>(k, i, i);
    };
    op.kernel("plain -O2", Lay::C, [](const Ctx& c) { plain_O2::trace<T, N>(c.p<T>(0), c.p<T>(1), c.n); })
      .kernel("plain -O3", Lay::C, [](const Ctx& c) { plain_O3::trace<T, N>(c.p<T>(0), c.p<T>(1), c.n); })
      .kernel("Eigen", Lay::C, [](const Ctx& c) { eigen_peer::trace<T, N>(c.p<T>(0), c.p<T>(1), c.n); })
      .kernel("vorx", Lay::C, std::move(vorx));
    return op;
}

template <class T, int N> Op transpose(const char* id, const char* title) {
    Op op;
    op.id = id;
    op.title = title;
    op.operands = {{Role::In, elemOf<T>(), N, N}, {Role::Out, elemOf<T>(), N, N}};
    op.tol = 0;
    op.reference = [](const Ctx& c, std::size_t k, long double* out) {
        for (int i = 0; i < N; ++i)
            for (int j = 0; j < N; ++j) out[j * N + i] = c.a[0].at<T>(k, i, j);
    };
    op.kernel("plain -O2", Lay::C, [](const Ctx& c) { plain_O2::transpose<T, N>(c.p<T>(0), c.p<T>(1), c.n); })
      .kernel("plain -O3", Lay::C, [](const Ctx& c) { plain_O3::transpose<T, N>(c.p<T>(0), c.p<T>(1), c.n); })
      .kernel("Eigen", Lay::C, [](const Ctx& c) { eigen_peer::transpose<T, N>(c.p<T>(0), c.p<T>(1), c.n); });
    return op;
}

template <class T>
using Ma = vorxStatus (*)(const T*, int32_t, int32_t, T*, int32_t, int32_t, uint32_t);
template <class T, Ma<T> Fn> void vorxC(const Ctx& c) { Fn(c.p<T>(0), c.os(0), c.rs(0), c.p<T>(1), c.os(1), c.rs(1), c.count()); }

template <class T>
using Reduce = vorxStatus (*)(const T*, int32_t, int32_t, T*, uint32_t);
template <class T, Reduce<T> Fn> void vorxReduce(const Ctx& c) { Fn(c.p<T>(0), c.os(0), c.rs(0), c.p<T>(1), c.count()); }

void registerShape() {
    auto& r = registry();
    r.push_back(frobNorm<float, 3>("frob_3x3_32f", "3x3 Frobenius norm 32f", vorxReduce<float, vorxFrobNorm_ma_32f_3x3>));
    r.push_back(frobNorm<float, 4>("frob_4x4_32f", "4x4 Frobenius norm 32f", vorxReduce<float, vorxFrobNorm_ma_32f_4x4>));
    r.push_back(trace<float, 4>("trace_4x4_32f", "4x4 trace 32f", vorxReduce<float, vorxTrace_ma_32f_4x4>));
    r.push_back(trace<double, 4>("trace_4x4_64f", "4x4 trace 64f", vorxReduce<double, vorxTrace_ma_64f_4x4>));

    // 4x4 32f also in the List and the Pointer-strided layout.
    Op t4 = transpose<float, 4>("transpose_4x4_32f", "4x4 transpose 32f");
    t4.kernel("vorx", Lay::C, vorxC<float, vorxTranspose_ma_32f_4x4>)
      .kernel("plain -O2", Lay::L, [](const Ctx& c) { plain_O2::transposeL<float, 4>(c.t<float>(0), c.t<float>(1), c.n); })
      .kernel("plain -O3", Lay::L, [](const Ctx& c) { plain_O3::transposeL<float, 4>(c.t<float>(0), c.t<float>(1), c.n); })
      .kernel("Eigen", Lay::L, [](const Ctx& c) { eigen_peer::transposeL<float, 4>(c.t<float>(0), c.t<float>(1), c.n); })
      .kernel("vorx", Lay::L, [](const Ctx& c) {
          vorxTranspose_ma_32f_4x4_L(c.t<float>(0), 0, c.rs(0), c.t<float>(1), 0, c.rs(1), c.count());
      })
      .kernel("plain -O2", Lay::P, [](const Ctx& c) { plain_O2::transposeP<float, 4>(c.t<float>(0), c.t<float>(1), c.n); })
      .kernel("plain -O3", Lay::P, [](const Ctx& c) { plain_O3::transposeP<float, 4>(c.t<float>(0), c.t<float>(1), c.n); })
      .kernel("Eigen", Lay::P, [](const Ctx& c) { eigen_peer::transposeP<float, 4>(c.t<float>(0), c.t<float>(1), c.n); })
      .kernel("vorx", Lay::P, [](const Ctx& c) {
          vorxTranspose_ma_32f_4x4_PS2(c.t<float>(0), 0, 4, c.t<float>(1), 0, 4, c.count());
      });
    r.push_back(std::move(t4));
    r.push_back(std::move(transpose<float, 6>("transpose_6x6_32f", "6x6 transpose 32f")
                              .kernel("vorx", Lay::C, vorxC<float, vorxTranspose_ma_32f_6x6>)));
    r.push_back(std::move(transpose<double, 4>("transpose_4x4_64f", "4x4 transpose 64f")
                              .kernel("vorx", Lay::C, vorxC<double, vorxTranspose_ma_64f_4x4>)));

    // A List-strided source to a Strided destination with a gap after every element:
    // the destination is the work operand, read back by each kernel's canonical form.
    Op cp;
    cp.id = "copy_4x4_32f_list_to_strided";
    cp.title = "4x4 copy 32f, List-strided to Strided";
    cp.operands = {{Role::In, Elem::F32, 4, 4}, {Role::Out, Elem::F32, 4, 4}, {Role::Work, Elem::F32, 4, 8}};
    cp.tol = 0;
    cp.reference = [](const Ctx& c, std::size_t k, long double* out) {
        for (int e = 0; e < 16; ++e) out[e] = c.a[0].at<float>(k, e / 4, e % 4);
    };
    Canon strided = [](const Ctx& c, std::size_t k, long double* out) {
        for (int e = 0; e < 16; ++e) out[e] = c.a[2].at<float>(k, e / 4, 2 * (e % 4));
    };
    cp.kernel("plain -O2", Lay::L, [](const Ctx& c) { plain_O2::copyListToStrided<float, 4>(c.t<float>(0), c.p<float>(2), c.n); }, strided)
      .kernel("plain -O3", Lay::L, [](const Ctx& c) { plain_O3::copyListToStrided<float, 4>(c.t<float>(0), c.p<float>(2), c.n); }, strided)
      .kernel("Eigen", Lay::L, [](const Ctx& c) { eigen_peer::copyListToStrided<float, 4>(c.t<float>(0), c.p<float>(2), c.n); }, strided)
      .kernel("vorx", Lay::L, [](const Ctx& c) {
          vorxCopy_ma_32f_LS(c.t<float>(0), 0, c.rs(0), 4, c.p<float>(2), c.os(2), c.rs(2), 8, 4, 4, c.count());
      }, strided);
    r.push_back(std::move(cp));
}

const Registrar reg(registerShape);
} // namespace
