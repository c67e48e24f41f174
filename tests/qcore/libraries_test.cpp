#include "tests/qcore/engine.h"

namespace {

struct Libraries : qtest::Engine {};

TEST_F(Libraries, LoadByNameAndAreClosedAtTheEnd) {
  ASSERT_EQ(EngEnvSetString("ConverterPath", "/nowhere:" QUILLON_CONVERTERS), ENG_OK);
  ENGHANDLE library = 0;
  void* entry = nullptr;
  EXPECT_EQ(EngOsLoadLibrary("no such converter", 0, &library, &entry), ENG_ERR_LOAD_LIBRARY);
  EXPECT_EQ(EngOsLoadLibrary("libm.so.6", 0, &library, &entry), ENG_ERR_LOAD_LIBRARY);
  ASSERT_EQ(EngOsLoadLibrary("textconv", 0, &library, &entry), ENG_OK);
  EXPECT_NE(entry, nullptr);
  EXPECT_EQ(EngMemFree(library), ENG_ERR_INVALID_HANDLE);
  EXPECT_EQ(EngOsFreeLibrary(library), ENG_OK);
  EXPECT_EQ(EngOsFreeLibrary(library), ENG_ERR_INVALID_HANDLE);
  ASSERT_EQ(EngOsLoadLibrary("textconv", 0, &library, &entry), ENG_OK);
  ASSERT_EQ(EngOsSetCallback(15, entry), ENG_OK);
  EXPECT_EQ(EngOsGetCallback(15), entry);
  EXPECT_EQ(EngOsSetCallback(16, entry), ENG_ERR_ARGUMENT);
}

}  // namespace
