#pragma once

/// @file TQFoundation.h
/// Every public header of the library.

#include <TQFoundation/base/AffineTransform.h>
#include <TQFoundation/base/Axis.h>
#include <TQFoundation/base/NumberText.h>
#include <TQFoundation/base/Point.h>
#include <TQFoundation/base/Rect.h>
#include <TQFoundation/base/TQAssert.h>
#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/base/TQMemory.h>
#include <TQFoundation/objects/Array.h>
#include <TQFoundation/objects/Class.h>
#include <TQFoundation/objects/Data.h>
#include <TQFoundation/objects/Date.h>
#include <TQFoundation/objects/Dictionary.h>
#include <TQFoundation/objects/Error.h>
#include <TQFoundation/objects/Exception.h>
#include <TQFoundation/objects/GeometryText.h>
#include <TQFoundation/objects/Null.h>
#include <TQFoundation/objects/Number.h>
#include <TQFoundation/objects/Object.h>
#include <TQFoundation/objects/Ref.h>
#include <TQFoundation/objects/Set.h>
#include <TQFoundation/objects/String.h>
#include <TQFoundation/objects/UUID.h>
#include <TQFoundation/objects/Value.h>
#include <TQFoundation/objects/Weak.h>
#include <TQFoundation/platform/Base64.h>
#include <TQFoundation/platform/CharacterCategory.h>
#include <TQFoundation/platform/FileHandle.h>
#include <TQFoundation/platform/FileReading.h>
#include <TQFoundation/platform/JSONDocument.h>
#include <TQFoundation/platform/KeyedArchiver.h>
#include <TQFoundation/platform/KeyedUnarchiver.h>
#include <TQFoundation/platform/PlainLog.h>
#include <TQFoundation/platform/URL.h>
#include <TQFoundation/serialisation/TQJSONCoding.h>
#include <TQFoundation/serialisation/TQJSONDataEncoder.h>
#include <TQFoundation/serialisation/TQJSONDecoder.h>
#include <TQFoundation/serialisation/TQJSONEncoder.h>
#include <TQFoundation/serialisation/TQJSONFileEncoder.h>
#include <TQFoundation/serialisation/TQJSONURLEncoder.h>
