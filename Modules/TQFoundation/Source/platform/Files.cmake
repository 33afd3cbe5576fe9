tq_room(platform
  BinaryPropertyList.cpp
  Checksum.cpp Checksum.h
  Codec.h
  DeflateCodec.cpp
  Digest.cpp Digest.h
  FileDownload.cpp FileDownload.h
  GroupApply.cpp
  JSONDocument.cpp JSONDocument.h
  JSONFault.cpp
  JSONObjectBuilder.cpp
  JSONShape.cpp
  Keychain.cpp Keychain.h
  KeyedArchiver.cpp KeyedArchiver.h
  KeyedRecords.cpp
  KeyedUnarchiver.cpp KeyedUnarchiver.h
  LZ4Codec.cpp
  LZMACodec.cpp
  LibraryClasses.cpp
  Operation.cpp Operation.h
  OperationQueue.cpp OperationQueue.h
  OperationScheduler.cpp
  PartialFile.cpp
  PoolThreads.cpp
  PreferenceDatabase.cpp
  PreferenceStore.cpp
  PropertyList.cpp
  RunLoop.cpp RunLoop.h
  SharedGeneration.cpp
  Timer.cpp Timer.h
  URLSession.cpp URLSession.h
  URLSessionEngine.cpp
  URLTransfer.cpp
  UserDefaults.cpp UserDefaults.h
  WorkerPool.cpp WorkerPool.h
  files/ExternalTool.cpp files/ExternalTool.h
  files/FileHandle.cpp files/FileHandle.h
  files/FileReading.cpp files/FileReading.h
  files/FileServices.cpp files/FileServices.h
  log/LogChannel.cpp log/LogChannel.h
  log/PlainLog.cpp log/PlainLog.h
  log/detail/SinkSlot.h
  lzfse/LZFSECodec.cpp
  lzfse/LZVNDecoder.cpp
  lzfse/LZVNEncoder.cpp
  memory/ObjectMemory.cpp
  text/Base64.cpp text/Base64.h
  text/CharacterCategory.cpp text/CharacterCategory.h
  text/Collation.cpp text/Collation.h
  threads/Lock.h
  threads/ObjectMonitor.cpp threads/ObjectMonitor.h
  threads/Random.cpp threads/Random.h
  threads/SerialQueue.cpp threads/SerialQueue.h
  threads/SharedLock.h
  threads/Thread.cpp threads/Thread.h
  threads/ThreadSystem.h
  threads/TickClock.cpp threads/TickClock.h
  threads/detail/FifoLock.h
  INTERNAL
  files/FileError.cpp files/FileError.h
  files/RegularFile.h
  files/SafeFile.cpp files/SafeFile.h
  lzfse/BlockDecoder.cpp lzfse/BlockDecoder.h
  lzfse/BlockEncoder.cpp lzfse/BlockEncoder.h
  lzfse/BlockHeader.cpp lzfse/BlockHeader.h
  lzfse/Encoder.cpp lzfse/Encoder.h
  lzfse/EntropyCoder.cpp lzfse/EntropyCoder.h
  lzfse/Format.h
  lzfse/LZVN.h
  lzfse/MatchFinder.h
  lzfse/Output.h
  memory/AddressRange.cpp memory/AddressRange.h)
