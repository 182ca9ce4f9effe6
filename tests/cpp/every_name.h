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

// The memory of every operand: one zeroed block that every table entry and list
// pointer points into. The generated calls build their views over it with run-time
// sizes RT, arrays of CNT objects, strides OS, RS, ES<T> (bytes).
constexpr uint32_t RT = 4, CNT = 2;
constexpr int32_t OS = 2048, RS = 256;
template <class T> constexpr int32_t ES = 2 * sizeof(T);

struct Arena {
    alignas(16) unsigned char mem[1 << 16] = {};
    float* ftab[256];  // element tables (the running diagonal of LoadIdentity reaches far)
    double* dtab[256];
    float* flist[CNT];
    double* dlist[CNT];
    uint32_t perms[CNT * 6] = {};  // a permutation per object

    Arena()
    {
        for (int i = 0; i < 256; ++i) {
            ftab[i] = reinterpret_cast<float*>(mem + 8192 + 32 * i);
            dtab[i] = reinterpret_cast<double*>(mem + 8192 + 32 * i);
        }
        for (uint32_t k = 0; k < CNT; ++k) {
            flist[k] = reinterpret_cast<float*>(mem + 20480 + 4096 * k);
            dlist[k] = reinterpret_cast<double*>(mem + 20480 + 4096 * k);
        }
    }
    template <class T> T* x() { return reinterpret_cast<T*>(mem + 1024); }
    template <class T> T* out() { return reinterpret_cast<T*>(mem + 49152); }
    template <class T> T** table()
    {
        if constexpr (std::is_same_v<T, float>) return ftab; else return dtab;
    }
    template <class T> T** list()
    {
        if constexpr (std::is_same_v<T, float>) return flist; else return dlist;
    }
    uint32_t* perm() { return perms; }
};
