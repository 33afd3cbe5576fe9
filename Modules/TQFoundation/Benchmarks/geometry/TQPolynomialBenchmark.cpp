#include <TQFoundation/geometry/curves/TQPolynomial.h>
#include <benchmark/benchmark.h>
#include <gsl/gsl_poly.h>

#include <random>
#include <vector>

// Roots of polynomials with coefficients uniform in [-5, 5]. For cubics, our library returns
// unsorted roots and GSL returns ascending ones. 4096 polynomials are used, so that the branch
// predictor cannot learn them.

namespace tq {
namespace {

constexpr std::size_t kPolynomials = 4096;

std::vector<TQPolynomial> polynomials(double leading) {
  std::mt19937_64 engine(7);
  std::uniform_real_distribution<double> coefficient(-5, 5);
  std::vector<TQPolynomial> result(kPolynomials);
  for (TQPolynomial& p : result) {
    p = {leading, coefficient(engine), coefficient(engine), coefficient(engine)};
  }
  return result;
}

template <class Solve>
void run(benchmark::State& state, double leading, Solve&& solve) {
  const std::vector<TQPolynomial> all = polynomials(leading);
  std::size_t i = 0;
  for (auto _ : state) benchmark::DoNotOptimize(solve(all[i++ % kPolynomials]));
  state.SetItemsProcessed(state.iterations());
}

void BM_Cubic_Roots_TQ(benchmark::State& state) {
  run(state, 1, [](const TQPolynomial& p) { return TQSolveP3(p.b, p.c, p.d); });
}
BENCHMARK(BM_Cubic_Roots_TQ);

void BM_Cubic_Roots_GSL(benchmark::State& state) {
  run(state, 1, [](const TQPolynomial& p) {
    TQPolynomialRoots r;
    r.count = gsl_poly_solve_cubic(p.b, p.c, p.d, &r.roots[0], &r.roots[1], &r.roots[2]);
    return r;
  });
}
BENCHMARK(BM_Cubic_Roots_GSL);

void BM_Quadratic_Roots_TQ(benchmark::State& state) {
  run(state, 0, [](const TQPolynomial& p) { return TQPolynomialFindRoots(p); });
}
BENCHMARK(BM_Quadratic_Roots_TQ);

void BM_Quadratic_Roots_GSL(benchmark::State& state) {
  run(state, 0, [](const TQPolynomial& p) {
    TQPolynomialRoots r;
    r.count = gsl_poly_solve_quadratic(p.b, p.c, p.d, &r.roots[0], &r.roots[1]);
    return r;
  });
}
BENCHMARK(BM_Quadratic_Roots_GSL);

}  // namespace
}  // namespace tq
