#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size);

TEST(SidecarFuzz, EveryKnownInputPasses)
{
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(TAMRIK_CORPUS)) {
        const std::string content = contentOf(entry.path().string());
        SCOPED_TRACE(entry.path().filename());
        // Ends the process when it does not pass.
        LLVMFuzzerTestOneInput(reinterpret_cast<const unsigned char*>(content.data()),
                               content.size());
        ++count;
    }
    EXPECT_GE(count, 20);
}
