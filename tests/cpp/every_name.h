// Calls of every built name through vorx.hpp (the generated cpp_calls_<i>.cpp): each
// call records the exported function it reached, which must be the name the catalogue
// gives for the operands' kinds, element type, size and layout.
#pragma once
#include <cstring>
#include <set>
#include <string>
#include <vector>

extern const char* vt_called;  // the last exported function called through the header
#define VORX_HPP_CALL(f, ...) (vt_called = #f, ::f(__VA_ARGS__))
#include "vorx.hpp"

using vorx::layout;

struct Calls {
    int calls = 0;
    std::set<std::string> names;
    std::vector<std::string> wrong;
    void check(const char* name, vorx::status s)
    {
        ++calls;
        names.insert(name);
        int v = static_cast<int>(s);
        bool known = v == 0 || v == -6 || v == -8 || v == -10 || v == -179;
        if (!vt_called || std::strcmp(vt_called, name) != 0 || !known)
            wrong.push_back(std::string(name) + " reached " + (vt_called ? vt_called : "nothing") +
                            ", status " + std::to_string(v));
        vt_called = nullptr;
    }
};

// Operands of every kind and layout over one zeroed block: run-time sizes are 4,
// arrays hold 2 objects, every table entry and list pointer lies inside the block.
struct Arena {
    static constexpr uint32_t kRunTime = 4, kCount = 2;
    static constexpr int32_t kObject = 2048, kRow = 256;
    alignas(16) unsigned char mem[1 << 16] = {};
    float* ftab[256];  // element tables (the running diagonal of LoadIdentity reaches far)
    double* dtab[256];
    float* flist[kCount];
    double* dlist[kCount];
    uint32_t perms[8] = {};

    Arena()
    {
        for (int i = 0; i < 256; ++i) {
            ftab[i] = reinterpret_cast<float*>(mem + 8192 + 32 * i);
            dtab[i] = reinterpret_cast<double*>(mem + 8192 + 32 * i);
        }
        for (uint32_t k = 0; k < kCount; ++k) {
            flist[k] = reinterpret_cast<float*>(mem + 20480 + 4096 * k);
            dlist[k] = reinterpret_cast<double*>(mem + 20480 + 4096 * k);
        }
    }
    template <class T> T* at(int off) { return reinterpret_cast<T*>(mem + off); }
    template <class T> T** table()
    {
        if constexpr (std::is_same_v<T, float>) return ftab; else return dtab;
    }
    template <class T> T** list()
    {
        if constexpr (std::is_same_v<T, float>) return flist; else return dlist;
    }
    template <class T> T* out() { return at<T>(49152); }
    uint32_t* perm() { return perms; }

    template <class T, uint32_t N, layout L, bool Array>
    auto vec()
    {
        constexpr int32_t es = 2 * sizeof(T);
        T* x = at<T>(1024);
        [[maybe_unused]] const uint32_t n = N ? N : kRunTime;
        auto pick = [&](auto fixed, auto run) { if constexpr (N) return fixed(); else return run(); };
        if constexpr (!Array && L == layout::contiguous)
            return pick([&] { return vorx::vec<N>(x); }, [&] { return vorx::vec(x, n); });
        else if constexpr (!Array && L == layout::strided)
            return pick([&] { return vorx::vec_strided<N>(x, es); }, [&] { return vorx::vec_strided(x, n, es); });
        else if constexpr (!Array)
            return pick([&] { return vorx::vec_elems<N>(table<T>(), 0); },
                        [&] { return vorx::vec_elems(table<T>(), n, 0); });
        else if constexpr (L == layout::contiguous)
            return pick([&] { return vorx::vec_array<N>(x, kObject, kCount); },
                        [&] { return vorx::vec_array(x, n, kObject, kCount); });
        else if constexpr (L == layout::strided)
            return pick([&] { return vorx::vec_array_strided<N>(x, kObject, es, kCount); },
                        [&] { return vorx::vec_array_strided(x, n, kObject, es, kCount); });
        else if constexpr (L == layout::elems)
            return pick([&] { return vorx::vec_array_elems<N>(table<T>(), 0, kCount); },
                        [&] { return vorx::vec_array_elems(table<T>(), n, 0, kCount); });
        else if constexpr (L == layout::elems_strided)
            return pick([&] { return vorx::vec_array_elems_strided<N>(table<T>(), 0, kObject, kCount); },
                        [&] { return vorx::vec_array_elems_strided(table<T>(), n, 0, kObject, kCount); });
        else if constexpr (L == layout::list)
            return pick([&] { return vorx::vec_list<N>(list<T>(), 0, kCount); },
                        [&] { return vorx::vec_list(list<T>(), n, 0, kCount); });
        else
            return pick([&] { return vorx::vec_list_strided<N>(list<T>(), 0, es, kCount); },
                        [&] { return vorx::vec_list_strided(list<T>(), n, 0, es, kCount); });
    }

    template <class T, uint32_t N, layout L, bool Array>
    auto mat()
    {
        constexpr int32_t es = 2 * sizeof(T);
        T* x = at<T>(1024);
        [[maybe_unused]] const uint32_t n = N ? N : kRunTime;
        auto pick = [&](auto fixed, auto run) { if constexpr (N) return fixed(); else return run(); };
        if constexpr (!Array && L == layout::contiguous)
            return pick([&] { return vorx::mat<N, N>(x, kRow); }, [&] { return vorx::mat(x, n, n, kRow); });
        else if constexpr (!Array && L == layout::strided)
            return pick([&] { return vorx::mat_strided<N, N>(x, kRow, es); },
                        [&] { return vorx::mat_strided(x, n, n, kRow, es); });
        else if constexpr (!Array)
            return pick([&] { return vorx::mat_elems<N, N>(table<T>(), 0); },
                        [&] { return vorx::mat_elems(table<T>(), n, n, 0); });
        else if constexpr (L == layout::contiguous)
            return pick([&] { return vorx::mat_array<N, N>(x, kObject, kRow, kCount); },
                        [&] { return vorx::mat_array(x, n, n, kObject, kRow, kCount); });
        else if constexpr (L == layout::strided)
            return pick([&] { return vorx::mat_array_strided<N, N>(x, kObject, kRow, es, kCount); },
                        [&] { return vorx::mat_array_strided(x, n, n, kObject, kRow, es, kCount); });
        else if constexpr (L == layout::elems)
            return pick([&] { return vorx::mat_array_elems<N, N>(table<T>(), 0, kCount); },
                        [&] { return vorx::mat_array_elems(table<T>(), n, n, 0, kCount); });
        else if constexpr (L == layout::elems_strided)
            return pick([&] { return vorx::mat_array_elems_strided<N, N>(table<T>(), 0, kObject, kCount); },
                        [&] { return vorx::mat_array_elems_strided(table<T>(), n, n, 0, kObject, kCount); });
        else if constexpr (L == layout::list)
            return pick([&] { return vorx::mat_list<N, N>(list<T>(), 0, kRow, kCount); },
                        [&] { return vorx::mat_list(list<T>(), n, n, 0, kRow, kCount); });
        else
            return pick([&] { return vorx::mat_list_strided<N, N>(list<T>(), 0, kRow, es, kCount); },
                        [&] { return vorx::mat_list_strided(list<T>(), n, n, 0, kRow, es, kCount); });
    }
};
