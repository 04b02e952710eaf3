// The seeds of the fuzzers, whole and damaged by a fixed rule.
#include <gtest/gtest.h>

#include "fuzz.h"
#include "temp_dir.h"
#include "typed.h"

TEST(Fuzz, SeedsWholeAndDamaged) {
  for (const FuzzTarget& target : fuzzTargets) {
    const TempDir folder;
    const auto tries = [&] {
      mox::SessionInit();
      std::mt19937 random(1);
      for (const std::string& seed : target.seeds())
        for (int i = 0; i < 12; ++i) {
          std::string bytes = seed;
          for (int k = 0; k < i && !bytes.empty(); ++k)
            bytes[random() % bytes.size()] = static_cast<char>(random());
          if (i % 4 == 3) bytes.resize(random() % (bytes.size() + 1));
          target.run(bytes);
        }
      return false;
    };
    EXPECT_EQ(mox::InChild(tries), 0) << target.name;
  }
}
