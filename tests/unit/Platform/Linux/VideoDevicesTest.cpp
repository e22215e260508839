#include "Platform/Linux/VideoDevices.h"
#include "Platform/CameraAccess.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include <sys/stat.h>
#include <unistd.h>

namespace {

/// Whether somebody without rights of his own is refused the devices in `folder`.
void expectRefused(const TemporaryFolder& folder, bool wanted)
{
    constexpr uid_t nobody = 65534;
    const auto ask = [&] {
        // The administrator is refused nothing.
        if (geteuid() == 0 && (setgid(nobody) != 0 || setuid(nobody) != 0))
            std::_Exit(2);
        std::_Exit(VideoDevices::areRefused(folder.path()) ? 1 : 0);
    };
    EXPECT_EXIT(ask(), testing::ExitedWithCode(wanted ? 1 : 0), "");
}

} // namespace

TEST(VideoDevices, AreRefusedWhenThereAreSomeAndNoneMayBeOpened)
{
    const TemporaryFolder folder;
    expectRefused(folder, false);
    writeFile(folder / "vcs", "");
    chmod((folder / "vcs").c_str(), 0);
    expectRefused(folder, false);
    writeFile(folder / "video0", "");
    chmod((folder / "video0").c_str(), 0);
    expectRefused(folder, true);
    writeFile(folder / "video2", "");
    chmod((folder / "video2").c_str(), 0666);
    expectRefused(folder, false);
}

TEST(VideoDevices, AreNotRefusedWhereThereIsNoFolder)
{
    EXPECT_FALSE(VideoDevices::areRefused("/nothing/here"));
}

TEST(VideoDevices, AreWhatTheUserIsAnsweredBy)
{
    const bool isRefused = VideoDevices::areRefused("/dev");
    EXPECT_EQ(Platform::cameraAuthorization(), isRefused
                                                   ? Platform::CameraAuthorization::Denied
                                                   : Platform::CameraAuthorization::Authorized);
    int answers = 0;
    Platform::requestCameraAccess([&](bool isGranted) {
        ++answers;
        EXPECT_EQ(isGranted, !isRefused);
    });
    EXPECT_EQ(answers, 1);
}
