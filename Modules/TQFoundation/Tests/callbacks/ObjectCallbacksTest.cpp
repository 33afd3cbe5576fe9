// Blocks, delegates, members of a host's classes and destructors that release everything in reach:
// objects, collections, comparisons and archives.

#include <TQFoundation/TQFoundation.h>

#include "callbacks/Callbacks.h"
#include "support/TemporaryDirectory.h"

namespace {

/// An object of a host. Each of its functions that the library calls drops everything.
struct Meddler final : Subclass<Meddler>,
                       TQSortable,
                       TQTreeComparisonDelegate,
                       TQJSONDecoderDelegate {
  static constexpr std::string_view className = "test::Meddler";
  static inline constinit World* world = nullptr;

  Meddler() = default;
  explicit Meddler(World& of) { world = &of; }
  explicit Meddler(TQJSONDecoder& decoder) {
    world->drop();
    EXPECT_EQ(decoder.decodeMembers()->count(), 2u);
    EXPECT_NE(decoder.decodeObjectForKey("o"), nullptr);
  }

  std::string name() const override { return world->drop(), "a / b"; }
  bool isEqual(const Object&) const override { return world->drop(), true; }
  void encodeAsJSON(TQJSONEncoder& encoder) const {
    world->drop();
    encoder.encodeInteger(1, "n");
  }
  void finishEncodingObject(TQJSONEncoder& encoder) const { encoder.write("}"); }
  Ref<Object> replacementObjectForJSONEncoder(TQJSONEncoder&) const {
    return world->drop(), nullptr;
  }
  void encodeWithCoder(KeyedArchiver& archiver) const {
    world->drop();
    archiver.encodeObject(String::of("text"), "o");
  }
  bool initWithCoder(KeyedUnarchiver& unarchiver) {
    world->drop();
    return unarchiver.decodeObjectOfClass<String>("o") != nullptr;
  }
  bool shouldInstantiateObjectOfClass(TQJSONDecoder& decoder, const Class&) override {
    world->drop();
    return decoder.error() == nullptr;
  }

  std::vector<std::string> propertiesOfObject(TQTreeComparison&, Object& a, Object&) override {
    if (!children) world->drop();
    return {a.description()};
  }
  void compareChildrenOf(TQTreeComparison& comparison, Object& a, Object& b) override {
    auto* const olds = objectCast<Array>(&a);
    auto* const news = objectCast<Array>(&b);
    if (olds == nullptr || news == nullptr) return;
    children ? comparison.compareOldArray(*olds, *news, "children")
             : comparison.compareOldObject(a.description().empty() ? a : *olds->firstObject(),
                                           *news->firstObject(), "child");
  }
  bool isObject(TQTreeComparison& comparison, Object& a, Object& b) override {
    world->drop();
    return comparison.inferMoves() && a.isEqual(b);
  }
  bool children = false;
};

Meddler& meddler(World& w) { return w.keep(makeRef<Meddler>(w)); }
Array& meddlers(World& w) {
  return w.keep(Array::arrayWithObjects({makeRef<Meddler>(w), makeRef<Meddler>(w)}));
}

/// Compares two trees, and drops everything where the delegate compares children, or properties.
void compare(World& w, bool children) {
  auto& delegate = meddler(w);
  delegate.children = children;
  const auto other = Array::arrayWithObjects({World::object(), String::of("b"), String::of("c")});
  auto& comparison = w.keep(TQTreeComparison::initWithRoot1(
      share(w.array()), other, true, Weak<TQTreeComparisonDelegate>(share(delegate))));
  EXPECT_FALSE(comparison.changes().empty());
}

Ref<Data> archive(World& w) {
  Class::registerClass<Meddler>();
  static_cast<void>(meddler(w));
  return Data::dataWithBytes(R"([{"_class":"test::Meddler","o":{}},"and more"])");
}

/// Keeps a decoder of an archive whose objects, or whose delegate, drop everything.
TQJSONDecoder& decoder(World& w, bool delegated = false) {
  auto& made = w.keep(TQJSONDecoder::initWithData(*archive(w)));
  if (delegated) {
    static Ref<Meddler> judge;  // outlives the call
    judge = makeRef<Meddler>(w);
    made.setDelegate(Weak<TQJSONDecoderDelegate>(judge));
  }
  return made;
}

const Callback objects[] = {
    {"Array::map, ::compactMap, ::flatMap, ::filter, firstObjectPassing",
     [](World& w) {
       EXPECT_EQ(w.array().map(w.making())->count(), 2u);
       EXPECT_EQ(w.array().compactMap(w.making())->count(), 2u);
       EXPECT_EQ(w.array().flatMap(w.droppingTo(Array::array()))->count(), 0u);
       EXPECT_EQ(w.array().filter(w.droppingTo(true))->count(), 2u);
       EXPECT_EQ(firstObjectPassing(w.array(), w.droppingTo(false)), nullptr);
     }},
    {"Ref::Ref, ::~Ref, Array::~Array, ::arrayWithObjects, Dictionary::~Dictionary, "
     "::dictionaryWithEntries, Set::~Set, ::setWithObjects, Error::errorWithDomain",
     [](World& w) {
       Ref<Object> last = w.dying();
       last = Array::arrayWithObjects({w.dying(), w.dying()});
       last = Set::setWithObjects({w.dying(), w.dying()});
       const auto entries = [&] { return Dictionary::dictionaryWithEntries({{"k", w.dying()}}); };
       last = entries();
       last = Error::errorWithDomain("domain", 1, entries());
       last = nullptr;
       EXPECT_EQ(w.drops(), 7);
     }},
    {"TQBezierSegmentIntersections",
     [](World& w) {
       // Coordinates without a fraction: so many places that the search reports before its end.
       const auto segment = [&w](Point from, Point to) -> const TQBezierSegment& {
         const Vector far{0x1p52, 0x1p52};
         return w.keep(TQBezierSegment::straight(from + far, to + far));
       };
       EXPECT_TRUE(TQBezierSegmentIntersections(segment({30, 2}, {18, 6}),
                                                segment({29, 2}, {18, 5}), w.dropping()));
       EXPECT_GT(w.drops(), 64);
     }},
    {"MutableArray::addObject, ::insertObject, ::removeObjectAtIndex, ::replaceObjectAtIndex, "
     "::removeAllObjects",
     [](World& w) {
       for (int change = 0; change < 3; ++change) {
         auto& array = w.keep(MutableArray::array());
         array.addObject(w.dying());
         if (change == 0) array.removeObjectAtIndex(0);
         if (change == 1) array.replaceObjectAtIndex(0, World::object());
         if (change == 2) array.insertObject(w.dying(), 0), array.removeAllObjects();
       }
       EXPECT_EQ(w.drops(), 4);
     }},
    {"MutableDictionary::setObject, ::removeObjectForKey, ::removeAllObjects",
     [](World& w) {
       for (int change = 0; change < 3; ++change) {
         auto& dictionary = w.keep(MutableDictionary::dictionary());
         dictionary.setObject(w.dying(), "key");
         if (change == 0) dictionary.setObject(World::object(), "key");
         if (change == 1) dictionary.removeObjectForKey(*String::of("key"));
         if (change == 2) dictionary.setObject(w.dying(), "k"), dictionary.removeAllObjects();
       }
       EXPECT_EQ(w.drops(), 4);
     }},
    {"MapTable::setObject, ::removeObjectForKey, ::setObjectForKeyedSubscript, ::removeAllObjects, "
     "::purge, ::purgeSome",
     [](World& w) {
       for (int change = 0; change < 6; ++change) {
         auto key = World::object();
         auto& table = w.keep(MapTable::weakToStrongObjectsMapTable());
         table.setObject(w.dying(), *key);
         if (change == 0) table.setObject(World::object(), *key);
         if (change == 1) table.setObjectForKeyedSubscript(nullptr, *key);
         if (change == 2) table.removeObjectForKey(*key);
         if (change == 3) table.removeAllObjects();
         key = nullptr;
         if (change == 4) table.purge();
         if (change == 5) table.purgeSome();
       }
       EXPECT_EQ(w.drops(), 6);
     }},
    {"MapTable::enumerateKeysAndObjectsUsingBlock, ::enumerateKeysUsingBlock, "
     "::enumerateObjectsUsingBlock, ::filter",
     [](World& w) {
       const auto table = [&w]() -> MapTable& {
         auto& made = w.keep(MapTable::strongToStrongObjectsMapTable());
         for (const char* key : {"a", "b"}) made.setObject(World::object(), *String::of(key));
         return made;
       };
       table().enumerateKeysAndObjectsUsingBlock(w.dropping());
       table().enumerateKeysUsingBlock(w.dropping());
       table().enumerateObjectsUsingBlock(w.dropping());
       EXPECT_EQ(table().filter(w.droppingTo(true))->count(), 2u);
     }},
    {"depthFirst, depthFirstPostOrder, breadthFirst, prune, LazyPruneTree::children",
     [](World& w) {
       const auto tree = [&w] {
         auto made = makeRef<RTree<int>>(2);
         for (int i = 0; i < 9; ++i) made->insert(i, Rect(i, 0, 1, 1));
         return prune(share(w.keep(std::move(made))), w.droppingTo(true));
       };
       std::size_t count = 0;
       const auto visit = [&](auto&& nodes) {
         for (const auto* node : nodes) count += node->count();
       };
       visit(depthFirst(tree()));
       visit(depthFirstPostOrder(tree()));
       visit(breadthFirst(tree()));
       const auto pruned = tree();
       EXPECT_FALSE(std::ranges::empty(pruned.children(pruned.root())));
       EXPECT_GT(count, 27u);
     }},
    {"visitEntriesIntersecting, elementsIntersecting",
     [](World& w) {
       auto& tree = w.keep(makeRef<RTree<int>>(2));
       for (int i = 0; i < 9; ++i) tree.insert(i, Rect(i, 0, 1, 1));
       EXPECT_EQ(elementsIntersecting(tree, {2.5, 0, 0, 0}), std::vector{2});
       std::size_t count = 0;
       visitEntriesIntersecting(tree, {0, 0, 9, 1}, [&](const auto&) { w.drop(), ++count; });
       EXPECT_EQ(count, 9u);
     }},
};

const Callback comparisons[] = {
    {"editSequenceTo",
     [](World& w) {
       EXPECT_TRUE(editSequenceTo(w.array(), w.array(), true, w.droppingTo(false)));
     }},
    {"applyEditSequence, revertEditSequence",
     [](World& w) {
       for (const auto edit : {applyEditSequence, revertEditSequence}) {
         auto& array = w.keep(MutableArray::array());
         array.addObject(makeRef<Meddler>(w));
         auto& changes = w.keep(TQArrayChanges());
         const auto change = edit == revertEditSequence
                                 ? TQComparisonArrayChange::insertionChangeForItem
                                 : TQComparisonArrayChange::removalChangeForItem;
         changes.push_back(change(World::object(), 0));
         edit(array, changes);
       }
       EXPECT_EQ(w.drops(), 2);
     }},
    {"crossReference, crossReferenceAgainst, TQArrayCrossReferenceHandler::setItemAddedBlock, "
     "::setComparisonBlock, ::setItemsMatchedBlock, ::setItemRemovedBlock, "
     "::setIndexedComparisonBlock",
     [](World& w) {
       for (int block = 0; block < 5; ++block) {
         auto& handler = w.keep(TQArrayCrossReferenceHandler());
         auto &olds = w.array(), &news = w.array();
         if (block == 0) handler.setComparisonBlock(w.droppingTo(false));
         if (block == 1) handler.setIndexedComparisonBlock(w.droppingTo(true));
         if (block == 2) handler.setItemsMatchedBlock(w.dropping());
         if (block == 3) handler.setItemRemovedBlock(w.dropping());
         if (block == 4) handler.setItemAddedBlock(w.dropping());
         const bool differ = block == 3 || block == 4;
         if (differ) handler.setIndexedComparisonBlock([](auto&&...) { return false; });
         block == 0 ? crossReference(&olds, &news, handler)
                    : crossReferenceAgainst(olds, &news, handler);
         EXPECT_GT(w.drops(), block);
       }
     }},
    {"consolidateAgainst, arrayByConsolidatingAgainst, TQArrayConsolidator::setComparisonBlock, "
     "::setUpdateBlock, ::setCreateBlock, ::setPostRemoveBlock",
     [](World& w) {
       for (int block = 0; block < 8; ++block) {
         auto& consolidator = w.keep(TQArrayConsolidator());
         const bool same = block % 4 < 2;
         consolidator.setComparisonBlock([same](auto&&...) { return same; });
         if (block % 4 == 0) consolidator.setComparisonBlock(w.droppingTo(true));
         if (block % 4 == 1) consolidator.setUpdateBlock(w.dropping());
         if (block % 4 == 2) consolidator.setCreateBlock(w.making());
         if (block % 4 == 3) consolidator.setPostRemoveBlock(w.dropping());
         auto& olds = w.keep(MutableArray::arrayWithArray(w.array()));
         auto& news = w.array();
         block < 4 ? static_cast<void>(consolidateAgainst(olds, news, consolidator))
                   : static_cast<void>(arrayByConsolidatingAgainst(olds, news, consolidator));
         EXPECT_GT(w.drops(), block);
       }
     }},
    {"TQTreeComparison::changes, ::compareOldObject, ::compareOldArray",
     [](World& w) { compare(w, false), compare(w, true); }},
    {"TQObjectSorting::sortObjectsWithNesting, ::sortObjectsWithCompressedNesting, "
     "TQSortableTreeItem::sortableTreeItemForObject, ::sortableTreeItemsForSortableObjects",
     [](World& w) {
       EXPECT_EQ(TQObjectSorting::sortObjectsWithNesting(meddlers(w)).size(), 1u);
       EXPECT_EQ(TQObjectSorting::sortObjectsWithCompressedNesting(meddlers(w)).size(), 2u);
       EXPECT_EQ(TQSortableTreeItem::sortableTreeItemsForSortableObjects(meddlers(w)).size(), 2u);
       EXPECT_NE(TQSortableTreeItem::sortableTreeItemForObject(meddler(w)), nullptr);
     }},
    {"TQSortableTreeItem::initWithObject, ::~TQSortableTreeItem, ::setDescriptionDictionary",
     [](World& w) {
       const auto init = TQSortableTreeItem::initWithObject;
       static_cast<void>(init(nullptr, &w.keep(init(w.dying(), nullptr, "a")), "b"));
       auto& item = w.keep(init(nullptr, nullptr, "a"));
       static_cast<void>(init(w.dying(), &item, "b"));
       static_cast<void>(init(nullptr, &item, "c"));
       auto& described = w.keep(init(nullptr, nullptr, "a"));
       described.setDescriptionDictionary(Dictionary::dictionaryWithEntries({{"k", w.dying()}}));
       described.setDescriptionDictionary(nullptr);
       EXPECT_EQ(w.drops(), 3);
     }},
    {"TQComparisonItem::setParent, ::~TQComparisonItem",
     [](World& w) {
       auto& item = w.keep(TQComparisonItem::init());
       item.setParent(TQComparisonItem::initWithNewObject(w.dying(), w.dying(), nullptr));
       item.setParent(nullptr);
     }},
};

const Callback archives[] = {
    {"TQJSONEncoder::encodeObjectAsData, ::encodeObjectAsString, ::encodeRootObject, "
     "TQJSONDataEncoder::encodeRootObject, TQJSONFileEncoder::encodeRootObject, "
     "TQJSONEncoder::encoderForWritingToMutableData, ::saveObject, ::encodeObject, "
     "::encoderForWritingToURL, TQJSONURLEncoder::~TQJSONURLEncoder",
     [](World& w) {
       EXPECT_NE(TQJSONEncoder::encodeObjectAsData(meddler(w)), nullptr);
       EXPECT_NE(TQJSONEncoder::encodeObjectAsString(meddlers(w)), nullptr);
       const test::TemporaryDirectory folder;
       const auto file = URL::fileURLWithPath(folder.write("archive", {}));
       for (auto encoder : {TQJSONEncoder::encoderForWritingToMutableData(MutableData::data()),
                            TQJSONEncoder::encoderForWritingToURL(*file)}) {
         auto& kept = w.keep(std::move(encoder));
         EXPECT_TRUE(kept.encodeRootObject(meddler(w)));
       }
       EXPECT_TRUE(TQJSONEncoder::encodeObject(meddler(w), *file, nullptr));
       EXPECT_TRUE(TQJSONEncoder::saveObject(meddler(w), *file));
     }},
    {"encodeAsKey, encodeAsRAWArchive, encodeClassInfoForJSON, startEncodingObject, "
     "finishEncodingObject, replacementObjectForJSONEncoder",
     [](World& w) {
       const auto encoder = [&w]() -> TQJSONEncoder& {
         return w.keep(TQJSONEncoder::encoderForWritingToMutableData(MutableData::data()));
       };
       EXPECT_EQ(replacementObjectForJSONEncoder(meddler(w), encoder()), nullptr);
       for (const auto step : {encodeAsKey, encodeAsRAWArchive, encodeClassInfoForJSON,
                               startEncodingObject, finishEncodingObject}) {
         try {
           step(meddler(w), encoder());
         } catch (const Exception&) {  // not a key
         }
       }
     }},
    {"TQJSONDecoder::decode, ::decodeMembers, ::decodeObjectForKey, ::classFromClassName, "
     "::decodeData, ::decodeDataError, ::decodeFileAtURL",
     [](World& w) {
       for (const bool delegated : {false, true}) {
         EXPECT_EQ(refCast<Array>(decoder(w, delegated).decode())->count(), 2u);
         EXPECT_NE(decoder(w, delegated).decodeData(*archive(w), nullptr), nullptr);
       }
       EXPECT_NE(decoder(w, true).classFromClassName("test::Meddler"), nullptr);
       EXPECT_NE(TQJSONDecoder::decodeDataError(w.keep(archive(w)), nullptr), nullptr);
       const test::TemporaryDirectory folder;
       const auto file = URL::fileURLWithPath(folder.write("archive", archive(w)->view()));
       EXPECT_NE(TQJSONDecoder::decodeFileAtURL(*file, nullptr), nullptr);
     }},
    {"TQJSONDecoder::decodeObject, ::decodeArray, ::decodeDictionary",
     [](World& w) {
       const auto parsed = [&w] { return refCast<Array>(decoder(w).root()); };
       EXPECT_NE(decoder(w).decodeObject(w.keep(Ref<Object>(parsed()))), nullptr);
       EXPECT_NE(decoder(w).decodeArray(w.keep(parsed())), nullptr);
       auto object = refCast<Dictionary>(share(parsed()->objectAtIndex(0)));
       EXPECT_NE(decoder(w).decodeDictionary(object, nullptr), nullptr);
       EXPECT_NE(decoder(w).decodeDictionary(w.keep(std::move(object))), nullptr);
     }},
    {"TQJSONDecoder::setError",
     [](World& w) {
       PlainLogSink before = setPlainLogSink(w.dropping());
       decoder(w).setError(Error::errorWithDomain("domain", 1, "text"));
       Ref<Error> error;
       EXPECT_EQ(decoder(w).decodeData(*Data::dataWithBytes("\x01["), &error), nullptr);
       EXPECT_NE(error, nullptr);
       setPlainLogSink(std::move(before));
     }},
    {"KeyedArchiver::archivedDataWithRootObject, ::encodeObject, "
     "KeyedUnarchiver::unarchiveRootObject, ::decodeObjectOfClass",
     [](World& w) {
       Class::registerClass<Meddler>();
       const auto data = KeyedArchiver::archivedDataWithRootObject(meddler(w));
       const auto filter = w.droppingTo(true);
       EXPECT_NE(KeyedUnarchiver::unarchiveRootObject(data->bytes(), nullptr, {}, filter), nullptr);
     }},
};

TEST(ObjectCallbacks, MayReleaseEverything) { test::run(objects); }
TEST(ComparisonCallbacks, MayReleaseEverything) { test::run(comparisons); }
TEST(ArchiveCallbacks, MayReleaseEverything) { test::run(archives); }

}  // namespace
