tq_room(platform
  archive/BinaryPropertyList.cpp
  archive/KeyedArchiver.cpp archive/KeyedArchiver.h
  archive/KeyedRecords.cpp
  archive/KeyedUnarchiver.cpp archive/KeyedUnarchiver.h
  archive/detail/BinaryPropertyList.h
  archive/detail/KeyedArchiveFormat.h
  archive/detail/KeyedReader.h
  archive/detail/KeyedRecords.h
  archive/detail/KeyedWriter.h
  bytes/Checksum.cpp bytes/Checksum.h
  bytes/Codec.h
  bytes/DeflateCodec.cpp
  bytes/Digest.cpp bytes/Digest.h
  bytes/LZ4Codec.cpp
  bytes/LZMACodec.cpp
  bytes/lzfse/LZFSECodec.cpp
  bytes/lzfse/LZVNDecoder.cpp
  bytes/lzfse/LZVNEncoder.cpp
  files/ExternalTool.cpp files/ExternalTool.h
  files/FileHandle.cpp files/FileHandle.h
  files/FileReading.cpp files/FileReading.h
  files/FileServices.cpp files/FileServices.h
  log/LogChannel.cpp log/LogChannel.h
  log/PlainLog.cpp log/PlainLog.h
  log/detail/SinkSlot.h
  loops/RunLoop.cpp loops/RunLoop.h
  loops/Timer.cpp loops/Timer.h
  loops/detail/TimerHeap.h
  memory/ObjectMemory.cpp
  network/ContentDecoder.cpp
  network/FileDownload.cpp network/FileDownload.h
  network/Keychain.cpp network/Keychain.h
  network/PartialFile.cpp
  network/URLSession.cpp network/URLSession.h
  network/URLSessionEngine.cpp
  network/URLTransfer.cpp
  network/detail/ContentDecoder.h
  network/detail/PartialFile.h
  network/detail/URLSessionEngine.h
  network/detail/URLTransfer.h
  operations/GroupApply.cpp
  operations/Operation.cpp operations/Operation.h
  operations/OperationQueue.cpp operations/OperationQueue.h
  operations/OperationScheduler.cpp
  operations/PoolThreads.cpp
  operations/WorkerPool.cpp operations/WorkerPool.h
  operations/detail/OperationScheduler.h
  operations/detail/PoolThreads.h
  preferences/FolderMonitor.cpp
  preferences/PreferenceDatabase.cpp
  preferences/PreferenceObservation.cpp preferences/PreferenceObservation.h
  preferences/PreferenceStore.cpp
  preferences/SharedGeneration.cpp
  preferences/UserDefaults.cpp preferences/UserDefaults.h
  preferences/detail/FolderMonitor.h
  preferences/detail/PreferenceDatabase.h
  preferences/detail/PreferenceStore.h
  preferences/detail/SharedGeneration.h
  text/Base64.cpp text/Base64.h
  text/CharacterCategory.cpp text/CharacterCategory.h
  text/Collation.cpp text/Collation.h
  text/PrintableText.cpp text/PrintableText.h
  text/URLResolution.cpp text/URLResolution.h
  threads/Lock.h
  threads/ObjectMonitor.cpp threads/ObjectMonitor.h
  threads/Random.cpp threads/Random.h
  threads/SerialQueue.cpp threads/SerialQueue.h
  threads/SharedLock.cpp threads/SharedLock.h
  threads/Thread.cpp threads/Thread.h
  threads/TickClock.cpp threads/TickClock.h
  threads/detail/FifoLock.h
  INTERNAL
  archive/PropertyList.cpp archive/PropertyList.h
  archive/WriteOnlyClass.cpp archive/WriteOnlyClass.h
  bytes/lzfse/BlockDecoder.cpp bytes/lzfse/BlockDecoder.h
  bytes/lzfse/BlockEncoder.cpp bytes/lzfse/BlockEncoder.h
  bytes/lzfse/BlockHeader.cpp bytes/lzfse/BlockHeader.h
  bytes/lzfse/Encoder.cpp bytes/lzfse/Encoder.h
  bytes/lzfse/EntropyCoder.cpp bytes/lzfse/EntropyCoder.h
  bytes/lzfse/Format.h
  bytes/lzfse/LZVN.h
  bytes/lzfse/MatchFinder.h
  bytes/lzfse/Output.h
  files/FileAttributes.cpp files/FileAttributes.h
  files/FileError.cpp files/FileError.h
  files/RegularFile.h
  files/SafeFile.cpp files/SafeFile.h
  files/StandardStreams.cpp files/StandardStreams.h
  json/JSONDocument.cpp json/JSONDocument.h
  json/JSONObjectBuilder.cpp json/JSONObjectBuilder.h
  json/JSONParser.cpp json/JSONParser.h
  json/JSONShape.cpp json/JSONShape.h
  json/JSONText.cpp json/JSONText.h
  libraries/LazyLibrary.cpp libraries/LazyLibrary.h
  loops/DescriptorSource.cpp loops/DescriptorSource.h
  memory/AddressRange.cpp memory/AddressRange.h
  threads/MonitorCount.h
  threads/MonitorReservation.h
  threads/ThreadSystem.h
  threads/TickClockSource.h)
