#pragma once

#include <filesystem>
#include <string>
#include <vector>

/// A folder of its own that goes when it does, with everything in it. Others may look into it.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return m_path; }

    /// The path of a file in it, which need not exist.
    std::string operator/(const std::string& name) const { return (m_path / name).string(); }

    /// What is in it, hidden files too, sorted.
    std::vector<std::string> names() const;

private:
    std::filesystem::path m_path;
};

/// All of a file; fails the running test when it cannot be read.
std::string contentOf(const std::string& path);

/// Fails the running test when the file cannot be written.
void writeFile(const std::string& path, const std::string& content);
