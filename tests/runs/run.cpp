#include "runs/run.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

extern char **environ;

Medium::Medium()
{
    fs::create_directories(place);
    fs::create_directories(scratch / "home");
    fs::create_symlink(SETUP_PROGRAM, place + "/setup");
    environment = {"HOME=" + (scratch / "home"), "PATH=/usr/bin:/bin", "LC_ALL=C.UTF-8"};
    for (char **pp = environ; *pp; pp++) /* the sanitizers' and coverage's settings */
        if (strstr(*pp, "SAN_OPTIONS=") || strncmp(*pp, "GCOV", 4) == 0)
            environment.push_back(*pp);
}

std::string usualHeader(const std::string &more)
{
    return "SetupVersion 1\nProductName Test Product\nProductVersion 3.5\n"
           "ProductDirectory prod\nLogFile setup.log\nHistoryFile h\n" +
           more;
}

void Medium::describe(const std::string &body, const std::string &header)
{
    file("cdinst.dat", header + body);
}

std::string onePackage(const std::string &operations)
{
    return offering("Package \"all\" \"All\"\n" + operations + "Suite \"Base\" all\n", {"Base"});
}

std::string offering(const std::string &packagesAndSuites, const std::vector<std::string> &suites)
{
    std::string ids;
    std::string lines;

    for (size_t i = 0; i < suites.size(); i++) {
        ids += " " + std::to_string(4 + i);
        lines += std::to_string(4 + i) + " Suite \"" + suites[i] + "\" \"label\" \"\" 0\n";
    }
    return packagesAndSuites + "ConfigBegin\n3 CusDlg \"All\" \"text\" \"\" 0" + ids + "\n" +
           lines + "ConfigEnd\n";
}

RunResult Medium::install()
{
    return run({"-cmdline", "-noroot", "-dest", dest});
}

static void redirect(const std::string &path, int iTo)
{
    int iFd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);

    dup2(iFd, iTo);
    close(iFd);
}

RunResult Medium::run(std::vector<std::string> arguments)
{
    arguments.insert(arguments.begin(), place + "/setup");
    return start(arguments);
}

RunResult Medium::start(std::vector<std::string> arguments)
{
    std::string outPath = scratch / "stdout";
    std::string errPath = scratch / "stderr";
    int iStatus = 0;

    std::vector<char *> argv, envp;
    for (std::string &word : arguments)
        argv.push_back(word.data());
    for (std::string &setting : environment)
        envp.push_back(setting.data());
    argv.push_back(nullptr);
    envp.push_back(nullptr);
    pid_t iChild = fork();
    if (iChild == 0) {
        redirect(outPath, 1);
        redirect(errPath, 2);
        if (chdir(place.c_str()) == 0)
            execve(argv[0], argv.data(), envp.data());
        _exit(127);
    }
    waitpid(iChild, &iStatus, 0);
    return {WIFSIGNALED(iStatus) ? 128 + WTERMSIG(iStatus) : WEXITSTATUS(iStatus),
            readFile(outPath), readFile(errPath)};
}

std::vector<std::string> Medium::listing()
{
    std::vector<std::string> names;

    for (const auto &entry : fs::recursive_directory_iterator(dest)) {
        std::string name = fs::relative(entry.path(), dest).string();
        names.push_back(entry.is_directory() && !entry.is_symlink() ? name + "/" : name);
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::vector<pid_t> processesNaming(const std::string &text)
{
    std::vector<pid_t> found;

    for (const auto &entry : fs::directory_iterator("/proc")) {
        std::string name = entry.path().filename();
        if (name.find_first_not_of("0123456789") != std::string::npos)
            continue;
        std::string command = readFile(entry.path() / "cmdline");
        std::error_code gone;
        std::string working = fs::read_symlink(entry.path() / "cwd", gone);
        if (stoi(name) != getpid() && (command + "\n" + working).find(text) != std::string::npos)
            found.push_back(stoi(name));
    }
    return found;
}

bool soon(const std::function<bool()> &condition, int iSeconds)
{
    auto end = std::chrono::steady_clock::now() + std::chrono::seconds(iSeconds);

    while (std::chrono::steady_clock::now() < end) {
        if (condition())
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return condition();
}

void must(const std::string &command)
{
    ASSERT_EQ(system(command.c_str()), 0) << command;
}
