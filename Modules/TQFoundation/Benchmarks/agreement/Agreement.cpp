// Compares results with those of the benchmarks' peers, over random input with a printed seed:
// R-tree queries with Boost.Geometry, polynomial roots with GSL, Bézier curves with lib2geom,
// lengths of edit sequences with dtl. Prints a line for each subject. The exit status is 1 if
// anything differs.

#include <2geom/bezier-curve.h>
#include <gsl/gsl_errno.h>
#include <gsl/gsl_integration.h>
#include <gsl/gsl_poly.h>

#include <boost/geometry.hpp>
#include <boost/geometry/index/rtree.hpp>
#include <dtl/dtl.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <TQFoundation/comparison/EditSequence.h>
#include <TQFoundation/geometry/curves/TQBezierSegment.h>
#include <TQFoundation/geometry/curves/TQPolynomial.h>
#include <TQFoundation/objects/Array.h>
#include <TQFoundation/objects/Number.h>
#include <TQFoundation/spatial/RTree.h>
#include <TQFoundation/spatial/RTreeSearch.h>

namespace {

using Random = std::mt19937_64;

double uniform(Random& random, double from, double to) {
  return std::uniform_real_distribution<double>(from, to)(random);
}

struct Tally {
  const char* subject;
  const char* peer;
  std::size_t compared = 0;
  std::size_t different = 0;
  double farthest = 0;  ///< the greatest difference that was accepted

  /// Counts two numbers, which may differ by `tolerance`.
  void compare(double ours, double theirs, double tolerance) {
    const double difference = std::abs(ours - theirs);
    ++compared;
    if (difference <= tolerance)
      farthest = std::max(farthest, difference);
    else
      ++different;
  }
  void compare(bool isSame) { compare(isSame ? 0 : 1, 0, 0); }
};

// Rects with corners on a grid touch often; those with other corners hardly ever do.
Tally queries(Random& random) {
  namespace bg = boost::geometry;
  using Corner = bg::model::point<double, 2, bg::cs::cartesian>;
  using Box = bg::model::box<Corner>;
  using Value = std::pair<Box, std::uint64_t>;
  Tally tally{"R-tree queries", "Boost.Geometry"};
  for (int round = 0; round < 20; ++round) {
    const bool onGrid = round % 2 != 0;
    const auto coordinate = [&](double limit) {
      const double value = uniform(random, 0, limit);
      return onGrid ? std::floor(value) : value;
    };
    const auto rect = [&] {
      return tq::Rect(coordinate(100), coordinate(100), coordinate(5), coordinate(5));
    };
    const auto boxOf = [](const tq::Rect& r) {
      return Box({r.origin.x, r.origin.y}, {r.origin.x + r.size.width, r.origin.y + r.size.height});
    };
    const auto ours = tq::makeRef<tq::RTree<std::uint64_t>>(2 + round);
    boost::geometry::index::rtree<Value, boost::geometry::index::rstar<16>> theirs;
    for (std::uint64_t i = 0; i < 2'000; ++i) {
      const tq::Rect stored = rect();
      ours->insert(i, stored);
      theirs.insert({boxOf(stored), i});
      if (i % 10 != 0) continue;
      const tq::Rect window = rect();
      std::vector<std::uint64_t> found = tq::elementsIntersecting(*ours, window);
      std::vector<Value> values;
      theirs.query(boost::geometry::index::intersects(boxOf(window)), std::back_inserter(values));
      std::vector<std::uint64_t> expected;
      for (const Value& value : values) expected.push_back(value.second);
      std::ranges::sort(found);
      std::ranges::sort(expected);
      tally.compare(found == expected && ours->intersects(window) == !expected.empty());
    }
  }
  return tally;
}

// GSL finds all roots as eigenvalues. Polynomials with two roots close to each other are left out:
// there the closed form has half the digits, or misses the pair, as documented.
Tally roots(Random& random) {
  Tally tally{"roots of cubics", "GSL"};
  gsl_poly_complex_workspace* const work = gsl_poly_complex_workspace_alloc(4);
  for (int i = 0; i < 100'000; ++i) {
    const std::array<double, 4> p{uniform(random, -5, 5), uniform(random, -5, 5),
                                  uniform(random, -5, 5), 1};
    std::array<std::complex<double>, 3> all;
    gsl_poly_complex_solve(p.data(), p.size(), work, reinterpret_cast<double*>(all.data()));
    std::vector<double> real;
    double closest = 100;
    for (std::size_t k = 0; k < 3; ++k) {
      closest = std::min(closest, std::abs(all[k] - all[(k + 1) % 3]));
      if (std::abs(all[k].imag()) < 1e-6) real.push_back(all[k].real());
    }
    if (closest < 1e-3) continue;
    std::ranges::sort(real);
    const auto ours =
        tq::TQPolynomialRootsSort(tq::TQPolynomialFindRoots({p[3], p[2], p[1], p[0]}));
    tally.compare(static_cast<std::size_t>(ours.count) == real.size());
    for (std::size_t k = 0; k < real.size(); ++k) tally.compare(ours.roots[k], real[k], 1e-9);
  }
  gsl_poly_complex_workspace_free(work);
  return tally;
}

struct Cubics {
  tq::TQBezierSegment ours;
  Geom::CubicBezier theirs;

  explicit Cubics(Random& random) {
    ours.degree = tq::TQBezierDegree::cubic;
    std::vector<Geom::Point> points;
    for (tq::Point& p : ours.points) {
      p = {uniform(random, -100, 100), uniform(random, -100, 100)};
      points.emplace_back(p.x, p.y);
    }
    theirs = Geom::CubicBezier(points[0], points[1], points[2], points[3]);
  }
};

Tally bounds(Random& random) {
  Tally tally{"bounds of cubics", "lib2geom"};
  for (int i = 0; i < 20'000; ++i) {
    const Cubics cubics(random);
    const tq::Rect ours = tq::TQBezierSegmentGetBounds(cubics.ours);
    const Geom::OptRect theirs = cubics.theirs.boundsExact();
    tally.compare(ours.origin.x, theirs->left(), 1e-9);
    tally.compare(ours.origin.y, theirs->top(), 1e-9);
    tally.compare(ours.size.width, theirs->width(), 1e-9);
    tally.compare(ours.size.height, theirs->height(), 1e-9);
  }
  return tally;
}

// lib2geom's own lengths are less accurate, so GSL integrates the speed of lib2geom's curve.
Tally lengths(Random& random) {
  Tally tally{"lengths of cubics", "lib2geom, GSL"};
  gsl_integration_workspace* const work = gsl_integration_workspace_alloc(1'000);
  for (int i = 0; i < 2'000; ++i) {
    const Cubics cubics(random);
    Geom::CubicBezier theirs = cubics.theirs;
    gsl_function speed{
        [](double t, void* curve) {
          return static_cast<Geom::CubicBezier*>(curve)->pointAndDerivatives(t, 1)[1].length();
        },
        &theirs};
    double length = 0, error = 0;
    gsl_integration_qags(&speed, 0, 1, 1e-9, 0, 1'000, work, &length, &error);
    tally.compare(std::sqrt(tq::TQBezierSegmentLengthSquared(cubics.ours)), length, 1e-6);
  }
  gsl_integration_workspace_free(work);
  return tally;
}

// Every crossing that lib2geom finds must be among ours, and the other way round. Places where the
// curves only come close are left out: our function reports them within its documented resolution.
Tally crossings(Random& random) {
  Tally tally{"crossings of cubics", "lib2geom"};
  for (int i = 0; i < 3'000; ++i) {
    const Cubics a(random), b(random);
    std::vector<tq::Point> ours;
    tq::TQBezierSegmentIntersections(a.ours, b.ours, [&](double s, double t) {
      const auto offsets = tq::TQBezierSegmentRefineIntersection(a.ours, b.ours, {s, t});
      const tq::Point onA = tq::TQBezierSegmentPointAtOffset(a.ours, offsets.a);
      const tq::Point onB = tq::TQBezierSegmentPointAtOffset(b.ours, offsets.b);
      if (std::hypot(onA.x - onB.x, onA.y - onB.y) < 1e-6) ours.push_back(onA);
    });
    for (const auto& crossing : a.theirs.intersect(b.theirs)) {
      const Geom::Point p = crossing.point();
      const auto distance = [&p](tq::Point q) { return std::hypot(p.x() - q.x, p.y() - q.y); };
      const auto nearest = std::ranges::min_element(ours, {}, distance);
      tally.compare(nearest == ours.end() ? 100 : distance(*nearest), 0, 0.01);
      if (nearest != ours.end()) ours.erase(nearest);
    }
    tally.compare(ours.empty());
  }
  return tally;
}

Tally edits(Random& random) {
  Tally tally{"lengths of edit sequences", "dtl"};
  for (int i = 0; i < 3'000; ++i) {
    std::vector<int> plain[2];
    std::vector<tq::Ref<tq::Object>> objects[2];
    for (int side = 0; side < 2; ++side) {
      for (auto n = random() % 80; n > 0; --n) {
        const int value = static_cast<int>(random() % 8);
        plain[side].push_back(value);
        objects[side].push_back(tq::Number::numberWith(std::int64_t{value}));
      }
    }
    dtl::Diff<int, std::vector<int>> theirs(plain[0], plain[1]);
    theirs.compose();
    const auto ours =
        tq::editSequenceTo(*tq::Array::arrayWithObjects(std::move(objects[0])),
                           *tq::Array::arrayWithObjects(std::move(objects[1])), false);
    tally.compare(static_cast<std::int64_t>(ours ? ours->size() : 0) == theirs.getEditDistance());
  }
  return tally;
}

}  // namespace

int main(int argc, char** argv) {
  const std::uint64_t seed = argc > 1 ? std::stoull(argv[1]) : 1;
  std::printf("seed %llu\n", static_cast<unsigned long long>(seed));
  gsl_set_error_handler_off();  // what it cannot compute will differ
  bool isSame = true;
  for (Tally (*const subject)(Random&) : {queries, roots, bounds, lengths, crossings, edits}) {
    Random random(seed);
    const Tally tally = subject(random);
    std::printf("%-26s %-15s %7zu compared, %zu differ, the others by at most %.1e\n",
                tally.subject, tally.peer, tally.compared, tally.different, tally.farthest);
    isSame = isSame && tally.compared > 0 && tally.different == 0;
  }
  return isSame ? EXIT_SUCCESS : EXIT_FAILURE;
}
