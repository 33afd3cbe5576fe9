tq_room(platform
  Base64.cpp Base64.h
  BinaryPropertyList.cpp
  CharacterCategory.cpp CharacterCategory.h
  Checksum.cpp Checksum.h
  Codec.h
  Collation.cpp Collation.h
  DeflateCodec.cpp
  Digest.cpp Digest.h
  ExternalTool.cpp ExternalTool.h
  FileDownload.cpp FileDownload.h
  FileError.cpp
  FileHandle.cpp FileHandle.h
  FileReading.cpp FileReading.h
  FileServices.cpp FileServices.h
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
  Lock.h
  LogChannel.cpp LogChannel.h
  ObjectMonitor.cpp ObjectMonitor.h
  Operation.cpp Operation.h
  OperationQueue.cpp OperationQueue.h
  OperationScheduler.cpp
  PartialFile.cpp
  PlainLog.cpp PlainLog.h
  PoolThreads.cpp
  PreferenceDatabase.cpp
  PreferenceStore.cpp
  PropertyList.cpp
  Random.cpp Random.h
  RunLoop.cpp RunLoop.h
  SafeFile.cpp
  SerialQueue.cpp SerialQueue.h
  SharedGeneration.cpp
  SharedLock.h
  Thread.cpp Thread.h
  ThreadSystem.h
  TickClock.cpp TickClock.h
  Timer.cpp Timer.h
  URLSession.cpp URLSession.h
  URLSessionEngine.cpp
  URLTransfer.cpp
  UserDefaults.cpp UserDefaults.h
  WorkerPool.cpp WorkerPool.h
  lzfse/LZFSECodec.cpp
  lzfse/LZVNDecoder.cpp
  lzfse/LZVNEncoder.cpp
  memory/ObjectMemory.cpp
  INTERNAL
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
