// Blocks, observers, targets and destructors that release everything in reach: run loops,
// operations, network, logs, locks, caches and work in the background.

#include <TQFoundation/TQFoundation.h>

#include <latch>

#include "callbacks/Callbacks.h"
#include "support/HandMovedClock.h"
#include "support/LoopbackServer.h"
#include "support/TemporaryDirectory.h"

namespace {

using namespace std::chrono_literals;

constexpr auto kWill = Operation::Change::will;
constexpr auto kDid = Operation::Change::did;

/// Drops everything at a change of an operation.
void observe(World& w, Operation& operation, std::string_view awaited, Operation::Change at) {
  operation.addObserver([&w, awaited, at](Operation&, std::string_view key, Operation::Change c) {
    if (key == awaited && c == at) w.drop();
  });
}

template <class Made = Operation>
Made& operation(World& w, std::string_view awaited = {}, Operation::Change at = kWill) {
  auto& made = w.keep(makeRef<Made>());
  observe(w, made, awaited, at);
  return made;
}

struct Background final : Subclass<Background, AsynchronousOperation> {
  static constexpr std::string_view className = "test::Background";
  explicit Background(World& of) : world(of) {}
  Progress run() override { return world.drop(), Progress::finished; }
  using AsynchronousOperation::didChangeValueForKey, AsynchronousOperation::finish,
      AsynchronousOperation::willChangeValueForKey;
  World& world;
};

struct Target final : Subclass<Target> {
  static constexpr std::string_view className = "test::Target";
  void update(TQRateLimiter& limiter) {
    world->drop();
    EXPECT_FALSE(limiter.needsUpdate());
  }
  World* world = nullptr;
};

/// Keeps a limiter. Its target stays, because a limiter holds it weakly.
TQRateLimiter& limiter(World& w) {
  static const auto target = makeRef<Target>();
  target->world = &w;
  return w.keep(TQRateLimiter::initWithTarget(target, &Target::update));
}

struct Shared final : Subclass<Shared, TQSingleton> {
  static constexpr std::string_view className = "test::Shared";
  explicit Shared(World* of = nullptr) : world(of) {}
  ~Shared() override {
    if (world != nullptr) world->drop();
  }
  World* const world;
};

struct Empty {
  using Value = int;
  void store(std::optional<int>) {}
  std::optional<int> retrieve() { return std::nullopt; }
};

struct Delegate final : Subclass<Delegate>, CurrentVariantDelegate {
  static constexpr std::string_view className = "test::Delegate";
  explicit Delegate(World& of) : world(of) {}
  ~Delegate() override { world.drop(); }
  Ref<LRVariant> currentVariant() override {
    LRVariant::setDelegate(nullptr);  // its last reference
    return world.drop(), LRVariant::beta();
  }
  World& world;
};

TQCache& cache(World& w) { return w.keep(TQCache::init()); }
Object& object(World& w) { return w.keep(World::object()); }

const Callback loops[] = {
    {"RunLoop::performBlock, ::runOnce, ::runFor, ::run, ::stop, ::current, ::main, mainQueueAsync",
     [](World& w) {
       RunLoop& loop = RunLoop::current();
       loop.performBlock([drops = w.dropping()] { drops(); });
       mainQueueAsync([object = w.dying()] {});
       loop.runOnce();
       loop.performBlock([&w] { w.drop(), RunLoop::main().stop(); });
       loop.run();
       loop.performBlock([object = w.dying(), &loop] { loop.stop(); });
       loop.runFor(1);
       EXPECT_EQ(w.drops(), 4);
     }},
    {"Timer::scheduledTimerWithTimeInterval, ::invalidate",
     [](World& w) {
       const auto action = [](Timer&) {};
       w.keep(Timer::scheduledTimerWithTimeInterval(1, action, w.dying(), true)).invalidate();
       w.keep(Timer::scheduledTimerWithTimeInterval(-1, action, w.dying(), false));
       RunLoop::current().runFor(0.001);
       EXPECT_EQ(w.drops(), 2);
     }},
    {"scheduledTimerWithTimeInterval, TQExecuteSimpleBlock",
     [](World& w) {
       test::HandMovedClock clock;
       w.keep(scheduledTimerWithTimeInterval(0.1, true, [&w](Timer& timer) {
         timer.invalidate();
         w.drop();
         EXPECT_FALSE(timer.isValid());
       }));
       clock.pass(100ms);
       const auto block = w.dropping();
       TQExecuteSimpleBlock(w.keep(scheduledTimerWithTimeInterval(
           1, false, [block](Timer& timer) { timer.invalidate(), block(timer); })));
     }},
    {"Debouncer::schedulePerformAction, ::init",
     [](World& w) {
       test::HandMovedClock clock;
       auto& debouncer = w.keep(Debouncer::init(1, w.dropping()));
       debouncer.schedulePerformAction();
       w.drop();
       debouncer.schedulePerformAction();  // its pending timer has the last reference
       clock.pass(1s);
       EXPECT_EQ(w.drops(), 2);
     }},
    {"TQRateLimiter::update, ::updateIfNeeded, ::performUpdateIfNeeded, ::setNeedsUpdate, "
     "::setActionInvocation",
     [](World& w) {
       for (const auto update : {&TQRateLimiter::update, &TQRateLimiter::updateIfNeeded,
                                 &TQRateLimiter::performUpdateIfNeeded}) {
         auto& each = limiter(w);
         each.setNeedsUpdate(true);
         (each.*update)();
       }
       limiter(w).setNeedsUpdate(true);
       RunLoop::main().runOnce();
       auto& limited = limiter(w);
       limited.setActionInvocation([object = w.dying()](auto&&...) {});
       limited.setActionInvocation(nullptr);
       EXPECT_EQ(w.drops(), 5);
     }},
    {"setLogSink, LogChannel::log, ::channel, setPlainLogSink, plainLog",
     [](World& w) {
       auto sink = setLogSink([&w, object = w.dying()](const LogMessage& message) {
         w.drop();
         setLogSink(nullptr);
         EXPECT_EQ(message.text, "text 1");
       });
       LogChannel::channel("a", "b").log(LogLevel::fault, "text {}", 1);
       setLogSink(std::move(sink));
       auto plain = setPlainLogSink([&w, object = w.dying()](std::string_view text) {
         w.drop();
         setPlainLogSink(nullptr);
         EXPECT_EQ(text, "text");
       });
       plainLog("text");
       setPlainLogSink(std::move(plain));
     }},
    {"LRVariant::current, ::setDelegate, ::matchesCurrentVariant, ::isDebugUIEnabled",
     [](World& w) {
       const auto variant = [&w](std::int64_t raw) -> LRVariant& {
         LRVariant::setDelegate(makeRef<Delegate>(w));
         return w.keep(LRVariant::initWithRawValue(raw));
       };
       EXPECT_EQ(variant(0).current(), LRVariant::beta());
       EXPECT_TRUE(variant(4).matchesCurrentVariant());
       EXPECT_FALSE(variant(0).isDebugUIEnabled());
       variant(0);
       LRVariant::setDelegate(nullptr);
     }},
    {"UserDefaults::observeChanges, PreferenceObservation::invalidate, ::~PreferenceObservation, "
     "Preference::observe",
     [](World& w) {
       const test::TemporaryDirectory folder;
       auto& defaults = w.keep(UserDefaults::initWithSuiteName("suite", folder.path("")));
       w.keep(defaults.observeChanges([object = w.dying()](auto&&) {})).invalidate();
       const Preference<double> number("key", 0.5,
                                       UserDefaults::initWithSuiteName("suite", folder.path("")));
       w.keep(number.observe(w.dropping()));
       number.setValue(1);
       for (int i = 0; i < 500 && w.drops() < 2; ++i) RunLoop::current().runFor(0.01);
       EXPECT_EQ(w.drops(), 2);
     }},
    {"TQKorvanInfo::Override::Override, ::~Override, TQKorvanInfo::setInfoDictionary",
     [](World& w) {
       {
         const TQKorvanInfo::Override info("key", w.dying());
         TQKorvanInfo::setInfoDictionary(*Dictionary::dictionaryWithEntries({{"key", w.dying()}}));
       }
       TQKorvanInfo::setInfoDictionary(*Dictionary::dictionary());
       EXPECT_EQ(w.drops(), 2);
     }},
};

const Callback operations[] = {
    {"Operation::cancel, ::addDependency, ::willChangeValueForKey, ::didChangeValueForKey",
     [](World& w) {
       operation(w, "isCancelled").cancel();
       operation(w, "isCancelled", kDid).cancel();
       auto& waiting = operation(w, "isReady");
       waiting.addDependency(operation(w));
       waiting.cancel();
       for (const auto change : {kWill, kDid}) {
         auto& changing = w.keep(makeRef<Background>(w));
         observe(w, changing, "isReady", change);
         if (change == kWill) changing.willChangeValueForKey("isReady");
         if (change == kDid) changing.didChangeValueForKey("isReady");
       }
       EXPECT_EQ(w.drops(), 5);
     }},
    {"Operation::start, ::main, BlockOperation::main, ::blockOperationWithBlock, "
     "::addExecutionBlock",
     [](World& w) {
       for (const auto key : {"isExecuting", "isFinished"}) {
         operation(w, key).start();
         operation(w, key, kDid).start();
       }
       w.keep(BlockOperation::blockOperationWithBlock(w.dropping())).start();
       auto& several = w.keep(BlockOperation::blockOperationWithBlock(w.dropping()));
       several.addExecutionBlock([object = w.dying()] {});
       several.start();
     }},
    {"Operation::waitUntilFinished",
     [](World& w) {
       auto& waited = operation(w, "isFinished");
       const std::jthread starter([&waited] {
         while (waited.referenceCount() == 1) std::this_thread::yield();  // until the wait holds it
         waited.start();
       });
       waited.waitUntilFinished();
     }},
    {"Operation::removeDependency, ::setCompletionBlock, ::~Operation",
     [](World& w) {
       auto &dependent = operation(w, "isReady"), &other = operation(w);
       dependent.addDependency(other);
       dependent.removeDependency(other);
       auto& replacing = operation(w);
       replacing.setCompletionBlock([object = w.dying()] {});
       replacing.setCompletionBlock(nullptr);
       std::latch completed(1);
       auto& finishing = operation(w);
       finishing.setCompletionBlock([&, drops = w.dropping()] { drops(), completed.count_down(); });
       finishing.start();
       completed.wait();
       EXPECT_EQ(w.drops(), 3);
     }},
    {"TQOperation::setFinished, ::setExecuting, ::setCancelled, AsynchronousOperation::start, "
     "::run, ::finish",
     [](World& w) {
       for (const auto change : {kWill, kDid}) {
         operation<TQOperation>(w, "isExecuting", change).setExecuting(true);
         operation<TQOperation>(w, "isCancelled", change).setCancelled(true);
         operation<TQOperation>(w, "isFinished", change).setFinished(true);
       }
       auto& awaited = w.keep(makeRef<TQOperation>());
       operation(w, "isReady", kDid).addDependency(awaited);
       awaited.setFinished(true);
       w.keep(makeRef<Background>(w)).start();
       auto& finishing = w.keep(makeRef<Background>(w));
       observe(w, finishing, "isFinished", kWill);
       finishing.finish();
       EXPECT_EQ(w.drops(), 9);
     }},
    {"OperationQueue::cancelAllOperations, ::setSuspended, ::setMaxConcurrentOperationCount",
     [](World& w) {
       auto& queue = w.keep(OperationQueue::init());
       queue.setSuspended(true);
       for (int i = 0; i < 3; ++i) queue.addOperation(operation(w, "isCancelled"));
       queue.cancelAllOperations();
       for (const bool suspended : {true, false}) {
         auto& other = w.keep(OperationQueue::init());
         suspended ? other.setSuspended(true) : other.setMaxConcurrentOperationCount(0);
         const auto block = BlockOperation::blockOperationWithBlock(w.dropping());
         other.addOperation(*block);
         suspended ? other.setSuspended(false) : other.setMaxConcurrentOperationCount(1);
         block->waitUntilFinished();
       }
     }},
    {"OperationQueue::addOperation, ::addOperationWithBlock, ::~OperationQueue",
     [](World& w) {
       for (const bool withBlock : {true, false}) {
         std::latch ended(1);
         const auto block = [&, drops = w.dropping()] { drops(), ended.count_down(); };
         auto& queue = w.keep(OperationQueue::init());
         withBlock ? queue.addOperationWithBlock(block)
                   : queue.addOperation(BlockOperation::blockOperationWithBlock(block));
         ended.wait();
       }
     }},
    {"groupApply, parallelApply",
     [](World& w) {
       groupApply(1, w.dropping());
       parallelApply(1, w.dropping());
     }},
    {"concurrentMap, compactConcurrentMap, concurrentMapWithCompact, mapWithOptions, "
     "compactMapWithOptions, applyBlockConcurrentlyAndCountSuccess",
     [](World& w) {
       const ArrayMapBlock block = [drops = w.making()](Object& each) {
         return each.isEqual(*String::of("a")) ? drops(each) : share(each);
       };
       const auto array = [&w]() -> Array& {
         return w.keep(Array::arrayWithObjects({String::of("a"), String::of("b")}));
       };
       for (const auto function : {concurrentMap, compactConcurrentMap}) {
         EXPECT_EQ(function(array(), block)->count(), 2u);
       }
       EXPECT_EQ(concurrentMapWithCompact(array(), true, block)->count(), 2u);
       for (const EnumerationOptions options : {0u, 1u}) {
         EXPECT_EQ(mapWithOptions(array(), options, block)->count(), 2u);
         EXPECT_EQ(compactMapWithOptions(array(), options, block)->count(), 2u);
       }
       const ArrayPredicate predicate = [&](Object& each) { return block(each) != nullptr; };
       EXPECT_EQ(applyBlockConcurrentlyAndCountSuccess(array(), predicate), 2u);
     }},
    {"mapWithMaxConcurrencyCount, TQConcurrentMapOperation::main",
     [](World& w) {
       for (const bool withFailure : {true, false}) {
         std::latch ended(1);
         const auto completion = [&, drops = w.dropping()](const Ref<Array>& results, auto&&...) {
           drops(results);
           EXPECT_EQ(results->count(), 2u);
           ended.count_down();
         };
         withFailure
             ? mapWithMaxConcurrencyCount(w.array(), 1, w.making(), ArrayMapOutcome(completion))
             : mapWithMaxConcurrencyCount(w.array(), 1, w.making(), ArrayMapCompletion(completion));
         ended.wait();
       }
       auto& one = w.keep(makeRef<TQConcurrentMapOperation>(
           World::object(), std::make_shared<const ArrayMapBlock>(w.making())));
       one.start();
     }},
};

/// Calls `start` with a request of a page that exists.
void fetch(const std::function<void(const URLRequest&)>& start) {
  const test::LoopbackServer server({{"/", [](const auto& socket, const auto&) {
                                        socket.send(test::LoopbackServer::page("200 OK", "b"));
                                      }}});
  URLRequest request;
  request.url = URL::URLWithString(server.url("/"));
  start(request);
}

const Callback network[] = {
    {"URLSession::dataTaskWithURL, ::dataTaskWithRequest, ::~URLSession, "
     "::sessionWithConfiguration, URLSessionDataTask::resume, ::cancel, ::~URLSessionDataTask",
     [](World& w) {
       for (int call = 0; call < 10; ++call) {
         fetch([&, callback = call % 5](const URLRequest& request) {
           std::latch ended(1);
           auto& session = w.keep(URLSession::sessionWithConfiguration({}));
           const auto completion = [&, callback, drops = w.dropping()](auto&&...) {
             if (callback > 1) drops();
             ended.count_down();
           };
           URLSessionTaskHandler handler{nullptr, nullptr, completion};
           if (callback == 0) handler.didReceiveResponse = w.droppingTo(true);
           if (callback == 1) handler.didReceiveData = w.droppingTo(true);
           auto& task = w.keep(callback < 3    ? session.dataTaskWithRequest(request, handler)
                               : callback == 3 ? session.dataTaskWithRequest(request, completion)
                                               : session.dataTaskWithURL(request.url, completion));
           call < 5 ? task.resume() : task.cancel();
           ended.wait();
         });
       }
       EXPECT_EQ(w.drops(), 8);
     }},
    {"FileDownload::downloadWithRequest, ::resume, ::cancel, ::~FileDownload",
     [](World& w) {
       const test::TemporaryDirectory folder;
       for (const bool cancels : {false, true}) {
         fetch([&](const URLRequest& request) {
           std::latch ended(1);
           const auto end = [&, drops = w.dropping()](auto&&...) { drops(), ended.count_down(); };
           auto& download = w.keep(FileDownload::downloadWithRequest(
               w.keep(URLSession::sessionWithConfiguration({})), request,
               *URL::fileURLWithPath(folder.path("file")), {w.dropping(), end}));
           cancels ? download.cancel() : download.resume();
           ended.wait();
         });
       }
     }},
};

const Callback caches[] = {
    {"TQCache::blockingCachedObjectForOwner, ::cachedObjectForOwner, "
     "::populateCacheForObjectWithOwner",
     [](World& w) {
       const auto block = w.making();
       EXPECT_NE(cache(w).blockingCachedObjectForOwner(object(w), object(w), block), nullptr);
       EXPECT_NE(cache(w).cachedObjectForOwner(object(w), object(w), block), nullptr);
       cache(w).populateCacheForObjectWithOwner(object(w), object(w), block);
       auto &owner = object(w), &key = object(w);
       auto& deferring = cache(w);
       deferring.setCachedObject(TQCacheDeferredCreation::createWithBlock(block), owner, key);
       EXPECT_NE(deferring.cachedObjectForOwner(owner, key), nullptr);
       EXPECT_EQ(w.drops(), 4);
     }},
    {"TQCache::setCachedObject, ::removeCachedObjectForOwner, ::removeCachedObjectsForOwner, "
     "::removeCachedObjectsExceptForOwners, ::removeAllCachedObjects, "
     "::initWithOwnerRetentionPolicy",
     [](World& w) {
       for (int removal = 0; removal < 5; ++removal) {
         auto &owner = object(w), &key = object(w);
         auto& removing = w.keep(TQCache::initWithOwnerRetentionPolicy(removal % 2));
         removing.setCachedObject(w.dying(), owner, key);
         if (removal == 0) removing.setCachedObject(nullptr, owner, key);
         if (removal == 1) removing.removeCachedObjectForOwner(owner, key);
         if (removal == 2) removing.removeCachedObjectsForOwner(owner);
         if (removal == 3) removing.removeCachedObjectsExceptForOwners({});
         if (removal == 4) removing.removeAllCachedObjects();
         EXPECT_EQ(w.drops(), removal + 1);
       }
     }},
    {"TQCacheDeferredCreation::selfOrDeferredObject, TQCache_selfOrDeferredObject, "
     "TQCacheDeferredCreation::unblockingSelfOrDeferredObject, ::createWithBlock, ::initWithBlock, "
     "TQCache_unblockingSelfOrDeferredObject",
     [](World& w) {
       const auto create = TQCacheDeferredCreation::createWithBlock;
       const auto block = w.making();
       EXPECT_NE(w.keep(create(block)).selfOrDeferredObject(), nullptr);
       EXPECT_NE(
           w.keep(TQCacheDeferredCreation::initWithBlock(block)).unblockingSelfOrDeferredObject(),
           nullptr);
       EXPECT_NE(TQCache_selfOrDeferredObject(create(block)), nullptr);
       EXPECT_NE(TQCache_unblockingSelfOrDeferredObject(create(block)), nullptr);
     }},
    {"Cache::findOrCreate, ::store, ::find, ObjectPool::vend, ::ObjectPool",
     [](World& w) {
       using Objects = Cache<Object, Object, Object>;
       EXPECT_NE(w.keep(ObjectPool<Object>(w.making())).vend(), nullptr);
       EXPECT_NE(w.keep(Objects()).findOrCreate(object(w), object(w), w.making()), nullptr);
       auto &owner = object(w), &key = object(w);
       auto& deferring = w.keep(Objects());
       deferring.store(TQCacheDeferredCreation::createWithBlock(w.making()), owner, key);
       EXPECT_NE(deferring.find(owner, key), nullptr);
       EXPECT_EQ(w.drops(), 3);
     }},
    {"TQObjectPool::vendObject, ::allObjectsWithBlock, ::recycleObject, ::setMaximumPoolCount, "
     "::removeAllObjects, ::initWithObjectCreatorBlock, ::~TQObjectPool",
     [](World& w) {
       const auto pool = [&w](int idle) -> TQObjectPool& {
         auto& made = w.keep(TQObjectPool::initWithObjectCreatorBlock(w.making()));
         for (; idle > 0; --idle) made.recycleObject(w.dying());
         return made;
       };
       EXPECT_NE(pool(0).vendObject(), nullptr);
       pool(1).allObjectsWithBlock(w.dropping());
       pool(2).setMaximumPoolCount(0);
       pool(2).removeAllObjects();
       auto& full = pool(1);
       full.setMaximumPoolCount(1);
       full.recycleObject(w.dying());
     }},
    {"AnyValueCache::retrieve",
     [](World& w) { EXPECT_EQ(w.keep(AnyValueCache<int>(Empty())).retrieve(w.droppingTo(3)), 3); }},
    {"TQSingleton::PrivateAPIForTestingOnly_resetSharedController, ::init, ::awakeFromNib, "
     "::sharedInstance",
     [](World& w) {
       static_cast<void>(TQSingleton::init<Shared>(&w));
       makeRef<Shared>(&w)->awakeFromNib();  // replaces it
       TQSingleton::PrivateAPIForTestingOnly_resetSharedController<Shared>();
       EXPECT_EQ(w.drops(), 2);
       EXPECT_NE(TQSingleton::sharedInstance<Shared>(), nullptr);
       TQSingleton::PrivateAPIForTestingOnly_resetSharedController<Shared>();
     }},
    {"sync", [](World& w) { sync(ObjectSynchronizer(share(object(w))), w.dropping()); }},
    {"ReadWriteLock::read, ::write",
     [](World& w) {
       sync(w.keep(makeRef<ReadWriteLock>()).read(), w.dropping());
       sync(w.keep(makeRef<ReadWriteLock>()).write(), w.dropping());
     }},
};

TEST(LoopCallbacks, MayReleaseEverything) { test::run(loops); }
TEST(OperationCallbacks, MayReleaseEverything) { test::run(operations); }
TEST(NetworkCallbacks, MayReleaseEverything) { test::run(network); }
TEST(CacheCallbacks, MayReleaseEverything) { test::run(caches); }

}  // namespace
