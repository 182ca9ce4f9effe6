#include <vorx.h>

int main(void)
{
    float a[3] = {1, 2, 3}, b[3] = {3, 2, 1}, d[3];
    return vorxAdd_vv_32f_3x1(a, b, d) == vorxStatusOk && d[0] == 4 ? 0 : 1;
}
