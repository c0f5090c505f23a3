/* What several tests need: a directory of their own, files in it, and what a pipe was given. */
#ifndef OVINST_TESTS_SUPPORT_H
#define OVINST_TESTS_SUPPORT_H

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

/* A scratch directory, removed with all it holds. */
struct Scratch {
    std::filesystem::path path;

    explicit Scratch(const std::string &parent = "/tmp")
    {
        std::string name = parent + "/setuptestXXXXXX";
        if (!mkdtemp(name.data()))
            abort();
        path = std::filesystem::canonical(name);
    }
    Scratch(const Scratch &) = delete;
    Scratch &operator=(const Scratch &) = delete;
    ~Scratch()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    std::string operator/(const std::string &name) const { return (path / name).string(); }
};

inline void writeFile(const std::string &path, const std::string &text)
{
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path, std::ios::binary) << text;
}

inline std::string readFile(const std::string &path)
{
    std::ostringstream text;

    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
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
