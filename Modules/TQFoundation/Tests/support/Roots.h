#pragma once

#include <vector>

#include <TQFoundation/geometry/curves/TQPolynomial.h>

namespace tq::test {

/// The roots in use, as matchers want them.
inline std::vector<double> used(const TQPolynomialRoots& roots) {
  return {roots.begin(), roots.end()};
}

}  // namespace tq::test
