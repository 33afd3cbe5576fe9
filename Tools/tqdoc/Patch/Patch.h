#pragma once

/// @file Patch.h
/// Applies the changes between two versions of a drawing to the old one.

#include <string>
#include <vector>

#include "Model/Document.h"

namespace tqdoc {

/// A change that does not fit the drawing.
struct Misfit {
  std::string path;    ///< of the change; "record 3" (from 1 on) if it has none
  std::string reason;  ///< such as "its shape is not as it was"
};

/// The result of applying changes.
struct Patched {
  tq::Ref<Document> document;   ///< with all changes that fit; null on failure
  std::vector<Misfit> misfits;  ///< the others, in their order
};

/// Applies parsed changeRecords(). A change fits if what it changes is as it was: the node and its
/// own properties, the whole node for a removal, the receiving group for an insertion or a move. Of
/// the children of a group only their number, kinds and names count. A change that does not fit
/// leaves its place as it is; so do the changes inside a node that is not moved for this reason.
/// @param error  receives the error if the result is not a drawing
[[nodiscard]] Patched patched(const Document& oldDocument, const tq::Array& changes,
                              tq::Ref<tq::Error>* error);

}  // namespace tqdoc
