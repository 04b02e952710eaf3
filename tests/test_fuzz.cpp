// The seeds of the fuzzers, whole and damaged by a fixed rule.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "fuzz/targets.h"
#include "temp_dir.h"

TEST(Fuzz, SeedsWholeAndDamaged) {
  for (const FuzzTarget& target : fuzzTargets) {
    const TempDir folder;
    std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
      FuzzBegin();
      std::mt19937 random(1);
      for (const std::string& seed : target.seeds())
        for (int i = 0; i < 12; ++i) {
          std::string bytes = seed;
          for (int k = 0; k < i && !bytes.empty(); ++k)
            bytes[random() % bytes.size()] = static_cast<char>(random());
          if (i % 4 == 3) bytes.resize(random() % (bytes.size() + 1));
          target.run(bytes);
        }
      _exit(0);
    }
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0) << target.name;
  }
}
