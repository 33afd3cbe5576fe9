#include <iostream>
#include <string>

#include <TQFoundation/objects/URL.h>
#include <TQFoundation/platform/text/URLResolution.h>

// The library's side of rfc3986.py. Reads pairs of lines, a base and a reference, and answers each
// with the resolved URL, or with an empty line if there is none.

int main() {
  for (std::string base, reference;
       std::getline(std::cin, base) && std::getline(std::cin, reference);) {
    const auto url = tq::URLWithString(reference, tq::URL::URLWithString(base).get());
    std::cout << (url ? url->absoluteString() : "") << '\n';
  }
}
