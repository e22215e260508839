#include "support/Tones.h"

#include "support/ChildProcess.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>

std::vector<float> Tones::soundOf(const std::string& film)
{
    const Outcome outcome =
        run(Command{{"ffmpeg", "-v", "error", "-i", film, "-vn", "-ac", "1", "-ar", "48000", "-f",
                     "f32le", "-af", "aresample=async=1:first_pts=0", "-"},
                    {{"LC_ALL", "C"}}});
    EXPECT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_EQ(outcome.error, "");
    std::vector<float> samples(outcome.output.size() / sizeof(float));
    std::memcpy(samples.data(), outcome.output.data(), samples.size() * sizeof(float));
    return samples;
}

std::vector<double> Tones::beginningsIn(const std::vector<float>& sound)
{
    std::vector<double> times;
    double lastLoud = -1;
    for (std::size_t i = 0; i < sound.size(); ++i) {
        if (std::abs(sound[i]) < .1F)
            continue;
        const double time = static_cast<double>(i) / rate;
        if (time - lastLoud > .1)
            times.push_back(time);
        lastLoud = time;
    }
    return times;
}

double Tones::nearest(const std::vector<double>& times, double time)
{
    return *std::min_element(times.begin(), times.end(), [time](double one, double other) {
        return std::abs(one - time) < std::abs(other - time);
    });
}
