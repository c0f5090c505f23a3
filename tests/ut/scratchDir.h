/* A directory of a test's own: the working directory while it lives, gone afterwards. */
#ifndef TESTS_UT_SCRATCHDIR_H
#define TESTS_UT_SCRATCHDIR_H

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

struct ScratchDir {
    std::filesystem::path before = std::filesystem::current_path();
    std::string path;

    ScratchDir()
    {
        char caPath[] = "/tmp/setup-test-XXXXXX";
        if (!mkdtemp(caPath))
            abort();
        path = caPath;
        std::filesystem::current_path(path);
    }
    ScratchDir(const ScratchDir &) = delete;
    ScratchDir &operator=(const ScratchDir &) = delete;
    ~ScratchDir()
    {
        std::filesystem::current_path(before);
        std::filesystem::remove_all(path);
    }
};

static inline void writeText(const std::string &path, const std::string &bytes)
{
    std::ofstream(path) << bytes;
}

static inline std::string readText(const std::string &path)
{
    std::ifstream in(path);
    return {std::istreambuf_iterator<char>(in), {}};
}

#endif
