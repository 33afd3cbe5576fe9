#include <TQFoundation/base/detail/StandardLibrary.h>

const char tq::detail::TQ_STANDARD_LIBRARY = 1;
