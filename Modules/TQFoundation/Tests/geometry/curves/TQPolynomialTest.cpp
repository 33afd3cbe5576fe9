#include <TQFoundation/geometry/curves/TQPolynomial.h>

#include <TQFoundation/objects/Number.h>

#include "support/RandomBezier.h"
#include "support/Roots.h"

namespace {

constexpr double kEpsilon = std::numeric_limits<double>::epsilon();

TEST(PolynomialRoots, FollowTheLeadingCoefficient) {
  // The roots are in the order of the formulas.
  const Rows<const char*, TQPolynomial, std::vector<double>> cases{
      {"cubic, three: smallest, largest, middle", {1, -6, 11, -6}, {1, 3, 2}},
      {"cubic, simple then double", {1, -4, 5, -2}, {2, 1}},
      {"cubic, triple twice", {1, -3, 3, -1}, {1, 1}},
      {"quadratic, larger first", {0, 1, -3, 2}, {2, 1}},
      {"quadratic, double twice", {0, 1, -2, 1}, {1, 1}},
      {"quadratic, none", {0, 1, 0, 1}, {}},
      {"linear", {0, 0, 2, -4}, {2}},
      {"constant", {0, 0, 0, 5}, {}},
  };
  for (const auto& [name, p, roots] : cases) {
    SCOPED_TRACE(name);
    const TQPolynomialRoots found = TQPolynomialFindRoots(p);
    EXPECT_THAT(used(found), testing::Pointwise(testing::DoubleNear(1e-12), roots));
    for (std::size_t i = roots.size(); i < 3; ++i) EXPECT_EQ(found.roots[i], 0);
  }
  EXPECT_EQ(used(TQSolveP2(-3, 2)), (std::vector<double>{2, 1}));
}

/// The same closed form with eleven more bits.
std::vector<long double> cubicRoots(long double a, long double b, long double c) {
  const long double Q = (a * a - 3 * b) / 9;
  const long double R = (2 * a * a * a - 9 * a * b + 27 * c) / 54;
  if (Q * Q * Q <= R * R) {
    const long double A = (R < 0 ? 1 : -1) * std::cbrt(std::sqrt(R * R - Q * Q * Q) + std::fabs(R));
    return {A + (A == 0 ? 0 : Q / A) - a / 3};
  }
  const long double theta = std::acos(R / std::sqrt(Q * Q * Q));
  constexpr long double kThird = 2 * std::numbers::pi_v<long double> / 3;
  std::vector<long double> roots;
  for (const long double turn : {0.0L, kThird, -kThird}) {
    roots.push_back(-2 * std::sqrt(Q) * std::cos(theta / 3 + turn) - a / 3);
  }
  return roots;
}

TEST(PolynomialRoots, CubicOnesAgreeWithMoreDigitsAndGiveZeroWhenPutBack) {
  RandomBezier random(1);
  int withThree = 0;
  for (int i = 0; i < 100'000; ++i) {
    const TQPolynomial p{1, random.number(-5, 5), random.number(-5, 5), random.number(-5, 5)};
    const std::vector<long double> exact = cubicRoots(p.b, p.c, p.d);
    const TQPolynomialRoots found = TQSolveP3(p.b, p.c, p.d);
    ASSERT_EQ(used(found).size(), exact.size());
    withThree += exact.size() == 3;
    for (std::size_t k = 0; k < exact.size(); ++k) {
      const double root = found.roots[k];
      const double slope = std::fabs(3 * root * root + 2 * p.b * root + p.c);
      const double size = std::fabs(root * root * root) + std::fabs(p.b) * root * root +
                          std::fabs(p.c * root) + std::fabs(p.d) + 1;
      EXPECT_LE(std::fabs(TQPolynomialEvalulate(p, root)), 64 * kEpsilon * (size + slope * 5));
      EXPECT_LE(slope * std::fabs(root - static_cast<double>(exact[k])),
                64 * kEpsilon * size + slope * 1e-14 + (slope < 1e-3));
    }
  }
  EXPECT_GT(withThree, 10'000);
}

TEST(PolynomialRoots, FiltersExcludeTheirShiftedBoundsAndKeepTheThreshold) {
  const TQPolynomialRoots roots{{0, 1, 0.5}, 3};
  EXPECT_EQ(TQPolynomialRootsFilter(roots, 0, 1, 1e-9), (TQPolynomialRoots{{0.5, 0, 0}, 1}));
  EXPECT_EQ(TQPolynomialRootsFilter(roots, 0, 1, -0.25), roots);
  EXPECT_EQ(TQPolynomialRootsFilter(roots, 0.25, 0.75, 0.25).count, 0);  // 0.5 is on both bounds
  EXPECT_EQ(TQPolynomialHighPassFilter(0.5, {0.5, -0.5, 0.4999, -7}),
            (TQPolynomial{0.5, -0.5, 0, -7}));
  EXPECT_EQ(TQPolynomialRootsFilter({{kNaN, kInf, 0.5}, 3}, 0, 1, 0).count, 1);
}

TEST(PolynomialRoots, SortAndSetTakeTheUsedOnesOnly) {
  EXPECT_EQ(TQPolynomialRootsSort({{3, 2, 1}, 2}), (TQPolynomialRoots{{2, 3, 1}, 2}));
  EXPECT_EQ(TQPolynomialRootsSort({{3, 2, 1}, 7}), (TQPolynomialRoots{{3, 2, 1}, 7}));
  const Rows<TQPolynomialRoots, std::vector<double>> cases{
      {{{2, 1, 2}, 3}, {2, 1}}, {{{kNaN, kNaN, 1}, 2}, {kNaN}}, {{{0.0, -0.0, 1}, 2}, {0}},
      {{{1, 2, 3}, 0}, {}},     {{{1, 2, 3}, 4}, {}},           {{{1, 2, 3}, -1}, {}}};
  for (const auto& [roots, members] : cases) {
    const Ref<Set> set = TQPolynomialRootsMakeSet(roots);
    EXPECT_EQ(set->count(), members.size());
    for (const double member : members) {
      EXPECT_TRUE(set->containsObject(*Number::numberWith(member)));
    }
  }
}

}  // namespace
