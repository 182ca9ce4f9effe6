/* Many small linear systems A x = b, each kept in one record with its matrix, right
 * side and solution: the LU decomposition of each matrix, then the solution of all
 * systems in one call, the records' size as the object stride. Then the residuals.
 * (The array form of the decomposition tests the last pivot of each object after the
 * first at a displaced place, which a dense array of records does not provide; see
 * docs/ludecomp.md.) */
#include <math.h>
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>

#include "vorx.h"

#define N 4
#define COUNT 5000

struct record {
    double a[N][N];  /* the system's matrix */
    double lu[N][N]; /* its factors */
    double b[N];
    double x[N];
    int tag;         /* anything else the program keeps beside them */
};

int main(void)
{
    struct record* r = malloc(COUNT * sizeof *r);
    uint32_t* perm = malloc(COUNT * N * sizeof *perm);
    const int32_t os = (int32_t)sizeof *r, rs = N * (int32_t)sizeof(double);
    unsigned seed = 12345;
    for (int k = 0; k < COUNT; ++k) {
        for (int i = 0; i < N; ++i) {
            for (int j = 0; j < N; ++j) {
                seed = seed * 1103515245u + 12345u;
                r[k].a[i][j] = (double)(seed >> 8 & 0xffff) / 65536.0 - 0.5;
            }
            r[k].b[i] = i + 1;
        }
        r[k].tag = k;
    }

    vorxStatus s;
    for (int k = 0; k < COUNT; ++k) {
        s = vorxLUDecomp_m_64f_4x4(&r[k].a[0][0], rs, perm + N * k, &r[k].lu[0][0], rs);
        if (s != vorxStatusOk) {
            printf("vorxLUDecomp_m_64f_4x4: status %d for system %d (singular)\n", (int)s, k);
            return 1;
        }
    }
    s = vorxLUBackSubst_mava_64f_4x4(&r[0].lu[0][0], os, rs, perm, r[0].b, os, r[0].x, os, COUNT);
    if (s != vorxStatusOk) {
        printf("vorxLUBackSubst_mava_64f_4x4: status %d\n", (int)s);
        return 1;
    }

    /* The residual |A x - b| of every system, relative to |b| and |A||x|. */
    double worst = 0;
    for (int k = 0; k < COUNT; ++k)
        for (int i = 0; i < N; ++i) {
            double sum = -r[k].b[i], scale = fabs(r[k].b[i]);
            for (int j = 0; j < N; ++j) {
                sum += r[k].a[i][j] * r[k].x[j];
                scale += fabs(r[k].a[i][j] * r[k].x[j]);
            }
            if (fabs(sum) / scale > worst) worst = fabs(sum) / scale;
        }
    printf("solved %d systems of order %d; system %d: x = (%.6f, %.6f, %.6f, %.6f)\n", COUNT, N,
           r[COUNT - 1].tag, r[COUNT - 1].x[0], r[COUNT - 1].x[1], r[COUNT - 1].x[2], r[COUNT - 1].x[3]);
    printf("largest relative residual: %.2e\n", worst);
    free(perm);
    free(r);
    return worst < 1e-12 ? 0 : 1;
}
