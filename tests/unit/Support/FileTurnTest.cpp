#include "Support/FileTurn.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace {

using namespace std::chrono_literals;

class FileTurnTest : public testing::Test {
protected:
    /// Writes `number` when its turn has come, and has finished when `end` has a value.
    std::future<void> write(int number, const QString& file, std::shared_future<void> end)
    {
        auto turn = std::make_unique<FileTurn>(file);
        return std::async(std::launch::async,
                          [this, number, end, waiting = std::move(turn)]() mutable {
                              const auto mine = std::move(waiting); // ends with the work
                              mine->await();
                              {
                                  const std::lock_guard lock(m_mutex);
                                  m_written.push_back(number);
                              }
                              end.wait();
                          });
    }
    std::vector<int> written()
    {
        const std::lock_guard lock(m_mutex);
        return m_written;
    }

private:
    std::mutex m_mutex;
    std::vector<int> m_written;
};

} // namespace

TEST_F(FileTurnTest, WritersOfAFileTakeTurnsInOrderAndOthersDoNotWait)
{
    const QString file = QStringLiteral("/films/a.mp4");
    std::promise<void> end;
    const std::shared_future<void> ended = end.get_future().share();
    const auto first = write(1, file, ended);
    std::vector<std::future<void>> later;
    for (int number = 2; number <= 5; ++number)
        later.push_back(write(number, file, ended));
    const auto other = write(100, QStringLiteral("/films/b.mp4"), ended);
    while (written().size() < 2)
        std::this_thread::sleep_for(1ms);
    EXPECT_THAT(written(), testing::UnorderedElementsAre(1, 100));
    end.set_value();
    for (const auto& it : later)
        it.wait();
    auto all = written();
    all.erase(std::find(all.begin(), all.end(), 100));
    EXPECT_THAT(all, testing::ElementsAre(1, 2, 3, 4, 5));
}

TEST_F(FileTurnTest, OneThatIsNotTakenKeepsNobody)
{
    const QString file = QStringLiteral("/films/a.mp4");
    auto unused = std::make_unique<FileTurn>(file);
    const FileTurn next(file);
    unused.reset();
    next.await();
    const FileTurn last(file);
    std::optional<FileTurn> gone(std::in_place, file);
    gone.reset();
}
