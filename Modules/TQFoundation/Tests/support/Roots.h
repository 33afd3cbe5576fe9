#pragma once

#include <vector>

#include <TQFoundation/geometry/curves/TQPolynomial.h>

namespace tq::test {

/// Returns the roots as a vector, for matchers.
inline std::vector<double> used(const TQPolynomialRoots& roots) {
  return {roots.begin(), roots.end()};
}

}  // namespace tq::test
