kst_test(jet_storage_tests
  SOURCES
    storage/CheckTest.cpp
    storage/CompactTest.cpp
    storage/CreateTest.cpp
    storage/DamageTest.cpp
    storage/DataPageTest.cpp
    storage/FileTest.cpp
    storage/FlushTest.cpp
    storage/HeaderTest.cpp
    storage/IndexTest.cpp
    storage/LongValueTest.cpp
    storage/MdbTools.cpp
    storage/MdbToolsTest.cpp
    storage/PagerTest.cpp
    storage/PrintedCells.cpp
    storage/RandomChangesTest.cpp
    storage/RefusedFilesTest.cpp
    storage/SampleChangesTest.cpp
    storage/SamplesTest.cpp
    storage/Support.cpp
    storage/TableTest.cpp
    storage/TextCodecTest.cpp
    storage/TextKeyTest.cpp
    storage/TransactionTest.cpp
    storage/UsageMapTest.cpp
  DEPENDS kst::jet)
target_compile_definitions(jet_storage_tests PRIVATE KESTRELON_SAMPLES="${KESTRELON_SAMPLES}")
