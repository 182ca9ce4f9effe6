#include <vorx.hpp>

int main()
{
    std::array<float, 3> a = {1, 2, 3}, b = {3, 2, 1}, d{};
    return vorx::add(vorx::vec(a), vorx::vec(b), vorx::vec(d)) == vorx::status::ok && d[0] == 4 ? 0 : 1;
}
