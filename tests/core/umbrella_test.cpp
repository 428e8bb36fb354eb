// The umbrella header must compile on its own, first in its translation unit.
#include <qz/qz.h>

#include <gtest/gtest.h>

TEST(UmbrellaHeader, CompilesAloneAndBringsTheWholeInterface) {
  EXPECT_STREQ(EGeneric({"Text", "ok"}).what(), "ok");
}
