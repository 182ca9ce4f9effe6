// A point cloud where every point has its own rigid motion (a 4x4 matrix: rotation
// and translation), moved with one call through the C++ interface; then a check that
// the motions kept each point's distance from its centre of rotation.
#include <cmath>
#include <cstdio>
#include <span>
#include <vector>

#include "vorx.hpp"

using Point = std::array<float, 4>;            // x, y, z, 1
using Motion = std::array<std::array<float, 4>, 4>;

int main()
{
    const uint32_t n = 10000;
    std::vector<Point> cloud(n), moved(n);
    std::vector<Motion> motion(n);
    for (uint32_t k = 0; k < n; ++k) {
        float t = 0.001f * static_cast<float>(k);
        cloud[k] = {std::cos(3 * t) * 2, std::sin(5 * t), t - 5, 1};
        float c = std::cos(t), s = std::sin(t);  // a turn about z, then a shift
        motion[k] = {{{c, -s, 0, 10 * t}, {s, c, 0, -t}, {0, 0, 1, 3}, {0, 0, 0, 1}}};
    }

    // vorxMul_mava_32f_4x4: the matrices and points are arrays of std::array.
    vorx::checked::mul(vorx::mat_array(std::span<const Motion>(motion)),
                       vorx::vec_array(std::span<const Point>(cloud)), vorx::vec_array(std::span(moved)));

    // The translation is column 3 of each matrix: a strided array of 3-vectors, one
    // matrix (64 bytes) apart, a row (16 bytes) between elements. The points' first
    // three elements are another strided array, 16 bytes apart.
    auto shift = vorx::vec_array_strided<3>(&motion[0][0][3], sizeof(Motion), sizeof(motion[0][0]), n);
    auto movedXyz = vorx::vec_array_strided<3>(moved[0].data(), sizeof(Point), sizeof(float), n);
    std::vector<Point> rel(n);
    auto relXyz = vorx::vec_array_strided<3>(rel[0].data(), sizeof(Point), sizeof(float), n);
    vorx::checked::sub(movedXyz, shift, relXyz);

    std::vector<float> before(n), after(n);
    vorx::checked::l2_norm(vorx::vec_array_strided<3>(cloud[0].data(), sizeof(Point), sizeof(float), n),
                           before.data());
    vorx::checked::l2_norm(relXyz, after.data());

    double worst = 0;
    for (uint32_t k = 0; k < n; ++k) worst = std::fmax(worst, std::fabs(after[k] - before[k]) / before[k]);
    std::printf("moved %u points, each by its own motion; point %u is now (%.4f, %.4f, %.4f)\n", n, n - 1,
                moved[n - 1][0], moved[n - 1][1], moved[n - 1][2]);
    std::printf("largest relative change of a distance from the centre: %.2e\n", worst);

    // A wrong size is a status, or with checked:: an exception.
    try {
        vorx::checked::l2_norm(vorx::vec_array(cloud[0].data(), 0, sizeof(Point), n), before.data());
    } catch (const vorx::bad_size& e) {
        std::printf("an empty array: %s (status %d)\n", e.what(), static_cast<int>(e.code()));
    }
    return worst < 1e-5 ? 0 : 1;
}
