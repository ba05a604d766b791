#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>

#include <omp.h>

#include "engine/dt/growth.h"
using namespace Tessel;
using namespace Tessel::Engine::DT;
static double now() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}
struct Table {
    std::vector<std::shared_ptr<ColumnCells>> cols;
    std::vector<double> y;
    std::vector<std::uint16_t> c;
};
Table make(size_t n, size_t p, int K) {
    std::mt19937_64 g(1);
    std::vector<std::vector<double>> x(p, std::vector<double>(n));
    auto u = [&] { return double(g() >> 11) * 0x1p-53; };
    for (auto& col : x)
        for (auto& v : col) v = std::sqrt(-2 * std::log(1 - u())) * std::cos(6.283185307 * u());
    Table t;
    for (size_t i = 0; i < n; ++i) {
        double s = x[0][i] + x[1][i] * x[2][i] + std::sin(3 * x[3][i]) +
                   (x[4][i] > 0.3 ? x[5 % p][i] : -x[6 % p][i]);
        double e = std::sqrt(-2 * std::log(1 - u())) * std::cos(6.283185307 * u());
        double z = s + e;
        t.y.push_back(z);
        t.c.push_back(K == 2 ? z > 0 : (z < -1 ? 0 : z < 1 ? 1 : 2));
    }
    for (auto& col : x) t.cols.push_back(ColumnCells::ofNumbers(std::move(col)));
    return t;
}
int main(int argc, char** argv) {
    size_t n = atoi(argv[1]), p = atoi(argv[2]);
    int K = atoi(argv[3]);
    int depth = atoi(argv[4]);
    int th = atoi(argv[5]);
    omp_set_num_threads(th);
    Table t = make(n, p, K);
    for (int rep = 0; rep < 3; ++rep) {
        auto cells = t.cols;
        if (rep == 0) {
        }
        double a = now();
        TrainingData d;
        d.numRows = int(n);
        for (auto& c : cells) d.features.push_back(TrainingFeature::numeric(c->rankCodes()));
        double b = now();
        auto prep = prepareRecords(d, n);
        prep.records.numClasses = K;
        if (K)
            prep.records.classes = t.c;
        else
            prep.records.targets = t.y;
        Limits lim;
        lim.maxNumLevels = depth;
        Tree tree = grow(d, prep, lim);
        double e = now();
        std::printf("rank %.3f grow %.3f nodes %zu\n", b - a, e - b, tree.nodes.size());
    }
}
