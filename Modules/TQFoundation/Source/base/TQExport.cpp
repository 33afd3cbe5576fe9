#include <TQFoundation/base/TQExport.h>

#ifdef _GLIBCXX_DEBUG
const char tq::detail::libraryHasDebugContainers = 1;
#endif
