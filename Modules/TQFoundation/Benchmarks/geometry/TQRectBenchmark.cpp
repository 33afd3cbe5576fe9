#include <2geom/rect.h>
#include <TQFoundation/geometry/rects/TQPrimitiveFunctions.h>
#include <benchmark/benchmark.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

// Rect functions over an array of rects; the time is per rect. Compared are: the inline functions;
// the same functions through a call that cannot be inlined, like an exported function; handwritten
// code on four doubles for rects that are known to be standardised; and the rects of a geometry
// library.

namespace tq {
namespace {

constexpr Rect kContainer{-50, -50, 100, 100};

struct Plain {
  double x, y, w, h;
};

std::vector<Rect> makeRects(std::size_t count) {
  std::mt19937_64 engine(21);
  std::uniform_real_distribution<double> coordinate(-100, 100), extent(0.5, 80);
  std::vector<Rect> result(count);
  for (Rect& r : result) {
    r = {coordinate(engine), coordinate(engine), extent(engine), extent(engine)};
  }
  return result;
}

std::vector<Plain> makePlain(std::size_t count) {
  std::vector<Plain> result;
  for (const Rect& r : makeRects(count)) {
    result.push_back({r.origin.x, r.origin.y, r.size.width, r.size.height});
  }
  return result;
}

std::vector<Geom::Rect> makePeers(std::size_t count) {
  std::vector<Geom::Rect> result;
  for (const Rect& r : makeRects(count)) {
    result.push_back(Geom::Rect::from_xywh(r.origin.x, r.origin.y, r.size.width, r.size.height));
  }
  return result;
}

// out[i] = op(in[i])
template <class R, class Op>
void each(benchmark::State& state, const std::vector<R>& in, Op op) {
  std::vector<R> out = in;
  for (auto _ : state) {
    for (std::size_t i = 0; i < in.size(); ++i) out[i] = op(in[i]);
    benchmark::DoNotOptimize(out.data());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(in.size()));
}

// value = op(value, in[i])
template <class R, class T, class Op>
void fold(benchmark::State& state, const std::vector<R>& in, const T& start, Op op) {
  for (auto _ : state) {
    T value = start;
    for (const R& r : in) value = op(value, r);
    benchmark::DoNotOptimize(value);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(in.size()));
}

std::size_t rectCount(const benchmark::State& state) {
  return static_cast<std::size_t>(state.range(0));
}

#define TQ_RECT_BENCHMARK(name) BENCHMARK(name)->ArgName("rects")->Arg(1024)->Arg(65'536)

// The cost of a call into the library: the pointer is loaded each time, as from the procedure
// linkage table.
template <class Function>
struct Called {
  Function* volatile function;
  template <class... Arguments>
  auto operator()(const Arguments&... arguments) const {
    return function(arguments...);
  }
};
template <class Function>
Called(Function*) -> Called<Function>;

Rect moveIn(const Rect& r) { return TQRectMoveIntoRect(r, kContainer); }

void BM_Rect_MoveInto_TQ(benchmark::State& state) {
  each(state, makeRects(rectCount(state)), [](const Rect& r) { return moveIn(r); });
}
TQ_RECT_BENCHMARK(BM_Rect_MoveInto_TQ);

void BM_Rect_MoveInto_called(benchmark::State& state) {
  each(state, makeRects(rectCount(state)), Called{+[](const Rect& r) { return moveIn(r); }});
}
TQ_RECT_BENCHMARK(BM_Rect_MoveInto_called);

// For rects with negative extents, too, and for null rects.
void BM_Rect_MoveInto_byHand(benchmark::State& state) {
  each(state, makePlain(rectCount(state)), [](Plain r) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    const bool isNull = r.x == kInfinity || r.y == kInfinity;
    const double width = std::fabs(r.w), height = std::fabs(r.h);
    if (isNull || r.x + (r.w > 0 ? r.w : 0) > 50) r.x = 50 - width;
    if (r.x < -50) r.x = -50;
    if (isNull || r.y + (r.h > 0 ? r.h : 0) > 50) r.y = 50 - height;
    if (r.y < -50) r.y = -50;
    return r;
  });
}
TQ_RECT_BENCHMARK(BM_Rect_MoveInto_byHand);

// For rects that are known to be standardised.
void BM_Rect_MoveInto_byHandStandard(benchmark::State& state) {
  each(state, makePlain(rectCount(state)), [](Plain r) {
    if (r.x + r.w > 50) r.x = 50 - r.w;
    if (r.x < -50) r.x = -50;
    if (r.y + r.h > 50) r.y = 50 - r.h;
    if (r.y < -50) r.y = -50;
    return r;
  });
}
TQ_RECT_BENCHMARK(BM_Rect_MoveInto_byHandStandard);

void BM_Rect_Safe_TQ(benchmark::State& state) {
  each(state, makeRects(rectCount(state)), [](const Rect& r) { return TQRectSafe(r); });
}
TQ_RECT_BENCHMARK(BM_Rect_Safe_TQ);

void BM_Rect_Safe_called(benchmark::State& state) {
  each(state, makeRects(rectCount(state)), Called{+[](const Rect& r) { return TQRectSafe(r); }});
}
TQ_RECT_BENCHMARK(BM_Rect_Safe_called);

void BM_Rect_Round_TQ(benchmark::State& state) {
  each(state, makeRects(rectCount(state)), [](const Rect& r) { return TQRectByRoundingRect(r); });
}
TQ_RECT_BENCHMARK(BM_Rect_Round_TQ);

void BM_Rect_Round_called(benchmark::State& state) {
  each(state, makeRects(rectCount(state)),
       Called{+[](const Rect& r) { return TQRectByRoundingRect(r); }});
}
TQ_RECT_BENCHMARK(BM_Rect_Round_called);

void BM_Rect_Round_byHand(benchmark::State& state) {
  each(state, makePlain(rectCount(state)), [](const Plain& r) {
    return Plain{std::round(r.x), std::round(r.y), std::round(r.w), std::round(r.h)};
  });
}
TQ_RECT_BENCHMARK(BM_Rect_Round_byHand);

void BM_Rect_RoundToStep_TQ(benchmark::State& state) {  // in the library, called
  each(state, makeRects(rectCount(state)),
       [](const Rect& r) { return TQRectByRoundingRectToStep(r, 0.25); });
}
TQ_RECT_BENCHMARK(BM_Rect_RoundToStep_TQ);

void BM_Rect_Fit_TQ(benchmark::State& state) {
  each(state, makeRects(rectCount(state)), [](const Rect& r) {
    return TQRectWithSizeProportionallyInRect({16, 9}, r);
  });
}
TQ_RECT_BENCHMARK(BM_Rect_Fit_TQ);

// For rects without extent, too.
void BM_Rect_Fit_byHand(benchmark::State& state) {
  each(state, makePlain(rectCount(state)), [](const Plain& r) {
    if (r.w == 0 || r.h == 0) return Plain{r.x + r.w / 2, r.y + r.h / 2, 0, 0};
    if (16 / r.w <= 9 / r.h) {
      const double width = 16 * r.h / 9;
      return Plain{r.x + (r.w - width) / 2, r.y, width, r.h};
    }
    const double height = 9 * r.w / 16;
    return Plain{r.x, r.y + (r.h - height) / 2, r.w, height};
  });
}
TQ_RECT_BENCHMARK(BM_Rect_Fit_byHand);

// By one factor for both extents, which rounds differently.
void BM_Rect_Fit_byHandFactor(benchmark::State& state) {
  each(state, makePlain(rectCount(state)), [](const Plain& r) {
    const double scale = std::fmin(r.w / 16, r.h / 9);
    return Plain{r.x + (r.w - 16 * scale) / 2, r.y + (r.h - 9 * scale) / 2, 16 * scale, 9 * scale};
  });
}
TQ_RECT_BENCHMARK(BM_Rect_Fit_byHandFactor);

void BM_Rect_FuzzyEqual_TQ(benchmark::State& state) {
  fold(state, makeRects(rectCount(state)), 0,
       [](int count, const Rect& r) { return count + TQRectFuzzyEqualToRect(r, kContainer); });
}
TQ_RECT_BENCHMARK(BM_Rect_FuzzyEqual_TQ);

void BM_Rect_FuzzyEqual_called(benchmark::State& state) {
  const Called called{+[](const Rect& r) { return TQRectFuzzyEqualToRect(r, kContainer); }};
  fold(state, makeRects(rectCount(state)), 0,
       [&](int count, const Rect& r) { return count + called(r); });
}
TQ_RECT_BENCHMARK(BM_Rect_FuzzyEqual_called);

void BM_Rect_FuzzyEqual_byHand(benchmark::State& state) {
  fold(state, makePlain(rectCount(state)), 0, [](int count, const Plain& r) {
    return count + (std::fabs(r.x + 50) < 0.001 && std::fabs(r.y + 50) < 0.001 &&
                    std::fabs(r.w - 100) < 0.001 && std::fabs(r.h - 100) < 0.001);
  });
}
TQ_RECT_BENCHMARK(BM_Rect_FuzzyEqual_byHand);

void BM_Rect_ReadingOrder_TQ(benchmark::State& state) {  // in the library, called
  fold(state, makeRects(rectCount(state)), 0, [](int sum, const Rect& r) {
    return sum + TQRectFuzzyCompareWithOptions(0, r, kContainer);
  });
}
TQ_RECT_BENCHMARK(BM_Rect_ReadingOrder_TQ);

void BM_Rect_Union_TQ(benchmark::State& state) {
  fold(state, makeRects(rectCount(state)), RectNull,
       [](const Rect& all, const Rect& r) { return RectUnion(all, r); });
}
TQ_RECT_BENCHMARK(BM_Rect_Union_TQ);

void BM_Rect_UnionSafe_TQ(benchmark::State& state) {
  fold(state, makeRects(rectCount(state)), RectZero,
       [](const Rect& all, const Rect& r) { return TQUnionRectSafe(all, r); });
}
TQ_RECT_BENCHMARK(BM_Rect_UnionSafe_TQ);

void BM_Rect_Union_2geom(benchmark::State& state) {
  fold(state, makePeers(rectCount(state)), Geom::OptRect(),
       [](Geom::OptRect all, const Geom::Rect& r) { return all.unionWith(r), all; });
}
TQ_RECT_BENCHMARK(BM_Rect_Union_2geom);

void BM_Rect_Intersects_TQ(benchmark::State& state) {
  fold(state, makeRects(rectCount(state)), 0,
       [](int count, const Rect& r) { return count + RectIntersectsRect(r, kContainer); });
}
TQ_RECT_BENCHMARK(BM_Rect_Intersects_TQ);

void BM_Rect_Intersects_2geom(benchmark::State& state) {
  const Geom::Rect container(-50, -50, 50, 50);
  fold(state, makePeers(rectCount(state)), 0,
       [&](int count, const Geom::Rect& r) { return count + r.intersects(container); });
}
TQ_RECT_BENCHMARK(BM_Rect_Intersects_2geom);

}  // namespace
}  // namespace tq
