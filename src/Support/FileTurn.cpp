#include "Support/FileTurn.h"

#include <algorithm>
#include <condition_variable>
#include <map>
#include <mutex>
#include <vector>

namespace {

struct Lines {
    std::mutex mutex;
    std::condition_variable moved;
    std::uint64_t numbers = 0; // handed out
    std::map<QString, std::vector<std::uint64_t>> byFile;

    /// Never destroyed: work may go on at the end of the program.
    static Lines& get()
    {
        static Lines& lines = *new Lines;
        return lines;
    }
};

} // namespace

FileTurn::FileTurn(const QString& file)
    : m_file(file)
{
    Lines& lines = Lines::get();
    const std::lock_guard lock(lines.mutex);
    m_number = ++lines.numbers;
    lines.byFile[m_file].push_back(m_number);
}

FileTurn::~FileTurn()
{
    Lines& lines = Lines::get();
    const std::lock_guard lock(lines.mutex);
    auto& line = lines.byFile[m_file];
    line.erase(std::find(line.begin(), line.end(), m_number));
    if (line.empty())
        lines.byFile.erase(m_file);
    lines.moved.notify_all();
}

void FileTurn::await() const
{
    Lines& lines = Lines::get();
    std::unique_lock lock(lines.mutex);
    lines.moved.wait(lock, [&] { return lines.byFile[m_file].front() == m_number; });
}
