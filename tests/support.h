/* What several tests need: a directory of their own, files in it, what a pipe was given and what
 * was printed. */
#ifndef OVINST_TESTS_SUPPORT_H
#define OVINST_TESTS_SUPPORT_H

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <sys/stat.h>

namespace fs = std::filesystem;

/* A scratch directory, removed with all it holds. */
struct Scratch {
    fs::path path;

    explicit Scratch(const std::string &parent = "/tmp")
    {
        std::string name = parent + "/setuptestXXXXXX";
        if (!mkdtemp(name.data()))
            abort();
        path = fs::canonical(name);
    }
    Scratch(const Scratch &) = delete;
    Scratch &operator=(const Scratch &) = delete;
    ~Scratch()
    {
        std::error_code ignored;
        fs::remove_all(path, ignored);
    }
    std::string operator/(const std::string &name) const { return (path / name).string(); }
};

inline std::string replaced(std::string text, const std::string &from, const std::string &to)
{
    for (size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
        text.replace(at, from.size(), to);
    return text;
}

inline void writeFile(const std::string &path, const std::string &text)
{
    fs::create_directories(fs::path(path).parent_path());
    std::ofstream(path, std::ios::binary) << text;
}

inline std::string readFile(const std::string &path)
{
    std::ostringstream text;

    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

/* The permission bits; 0 for what is not there. */
inline unsigned modeOf(const std::string &path)
{
    struct stat info = {};
    return stat(path.c_str(), &info) == 0 ? info.st_mode & 07777 : 0;
}

/* What work prints on standard output, or on standard error. */
template <typename Work> std::string printed(Work work)
{
    testing::internal::CaptureStdout();
    work();
    return testing::internal::GetCapturedStdout();
}

template <typename Work> std::string told(Work work)
{
    testing::internal::CaptureStderr();
    work();
    return testing::internal::GetCapturedStderr();
}

/* A stream that keeps what is written to it: stands in for the pipe. */
struct Records {
    char *pText = nullptr;
    size_t iSize = 0;
    FILE *pStream = open_memstream(&pText, &iSize);

    Records() = default;
    Records(const Records &) = delete;
    Records &operator=(const Records &) = delete;
    ~Records()
    {
        fclose(pStream);
        free(pText);
    }
    std::string text()
    {
        fflush(pStream);
        return std::string(pText, iSize);
    }
    /* What was written since the last time. */
    std::string take()
    {
        std::string taken = text();
        rewind(pStream);
        return taken;
    }
};

#endif
