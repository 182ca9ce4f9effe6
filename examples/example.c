/* A first look at vorx: the version record, then sums and differences of vectors
 * and arrays of vectors in three of the layouts. */
#include <stdio.h>

#include "vorx.h"

static void show(const char* what, const float* v, unsigned n)
{
    printf("  %-34s", what);
    for (unsigned j = 0; j < n; ++j) printf(" %7.2f", v[j]);
    printf("\n");
}

int main(void)
{
    const vorxVersionRecord* r = vorxGetLibVersion();
    printf("%s %s (%d.%d build %d.%d, cpu tag \"%s\", built %s)\n", r->libraryName,
           r->versionText, r->majorVersion, r->minorVersion, r->buildMajor, r->buildMinor,
           r->cpuTag, r->buildDate);

    /* One pair of 4-vectors, Contiguous layout. */
    float a[4] = {1, 2, 3, 4}, b[4] = {0.5f, 0.25f, 0.125f, 0.0625f}, d[4];
    vorxStatus s = vorxAdd_vv_32f_4x1(a, b, d);
    printf("vorxAdd_vv_32f_4x1 -> %d\n", (int)s);
    show("a + b", d, 4);

    /* Three 3-vectors with a stride of 16 bytes, minus one vector. */
    float arr[12] = {1, 1, 1, 0, 2, 2, 2, 0, 3, 3, 3, 0}, one[3] = {1, 2, 3}, out[12] = {0};
    s = vorxSub_vav_32f_3x1(arr, 16, one, out, 16, 3);
    printf("vorxSub_vav_32f_3x1 -> %d\n", (int)s);
    for (int k = 0; k < 3; ++k) show("arr[k] - one", out + 4 * k, 3);

    /* The same vectors reached through a list of object pointers, plus a value. */
    const float* list[3] = {arr + 8, arr + 4, arr};
    float o0[3], o1[3], o2[3];
    float* dlist[3] = {o0, o1, o2};
    s = vorxAdd_vac_32f_3x1_L(list, 0, 10.0f, dlist, 0, 3);
    printf("vorxAdd_vac_32f_3x1_L -> %d\n", (int)s);
    for (int k = 0; k < 3; ++k) show("list[k] + 10", dlist[k], 3);

    /* Doubles, one pointer per element (Pointer layout), and a status. */
    double x[3] = {1e16, 1, -1}, y[3] = {1, 1, 1}, z[3];
    const double* xp[3] = {&x[0], &x[1], &x[2]};
    const double* yp[3] = {&y[0], &y[1], &y[2]};
    double* zp[3] = {&z[0], &z[1], &z[2]};
    s = vorxSub_vv_64f_P(xp, 0, yp, 0, zp, 0, 3);
    printf("vorxSub_vv_64f_P -> %d: %.17g %g %g\n", (int)s, z[0], z[1], z[2]);
    zp[1] = 0;
    s = vorxSub_vv_64f_P(xp, 0, yp, 0, zp, 0, 3);
    printf("vorxSub_vv_64f_P with a null entry -> %d (vorxStatusNullPointer is %d)\n", (int)s,
           vorxStatusNullPointer);
    return 0;
}
