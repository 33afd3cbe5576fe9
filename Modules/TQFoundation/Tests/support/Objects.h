#pragma once

// The classes of objects.

#include <TQFoundation/objects/Array.h>
#include <TQFoundation/objects/Class.h>
#include <TQFoundation/objects/Data.h>
#include <TQFoundation/objects/Date.h>
#include <TQFoundation/objects/Dictionary.h>
#include <TQFoundation/objects/Error.h>
#include <TQFoundation/objects/Exception.h>
#include <TQFoundation/objects/Null.h>
#include <TQFoundation/objects/Number.h>
#include <TQFoundation/objects/Object.h>
#include <TQFoundation/objects/Set.h>
#include <TQFoundation/objects/String.h>
#include <TQFoundation/objects/URL.h>
#include <TQFoundation/objects/UUID.h>
#include <TQFoundation/objects/Value.h>
#include <TQFoundation/objects/Weak.h>

#include "support/Test.h"
