#include "medium/output.h"

#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include "ut/owned.h"

enum { SHOW_NSEC = 100000000 }; /* as often as progress is worth reading */

static FILE *s_pOut = stdout;

void OV_mediumOpenOutput()
{
    const int iResults = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    FILE *pOut = iResults < 0 ? nullptr : fdopen(iResults, "w");

    if (!pOut || dup2(STDERR_FILENO, STDOUT_FILENO) < 0) {
        perror("ovmedium: standard output");
        exit(2);
    }
    s_pOut = pOut;
}

FILE *OV_mediumOut()
{
    return s_pOut;
}

static OwnedText compose(const char *pFormat, va_list args)
{
    char *pText = nullptr;

    if (vasprintf(&pText, pFormat, args) < 0) {
        fputs("ovmedium: out of memory\n", stderr);
        exit(2);
    }
    return OwnedText(pText);
}

/* Keeps control characters of names from the reader's terminal; line ends may be a message's own.
 */
static std::string withoutControls(const std::string &text, bool bLines)
{
    std::string shown;
    char caEscape[8];

    for (char c : text) {
        const unsigned char iByte = static_cast<unsigned char>(c);
        if (c == '\n') {
            shown += bLines ? "\n" : "\\n";
        } else if (iByte < ' ' || iByte == 0x7f) {
            (void)snprintf(caEscape, sizeof(caEscape), "\\x%02x", iByte); /* fits */
            shown += caEscape;
        } else {
            shown += c;
        }
    }
    return shown;
}

std::string OV_mediumShown(const std::string &text)
{
    return withoutControls(text, false);
}

void OV_mediumPrint(const char *pFormat, ...)
{
    va_list args;

    va_start(args, pFormat);
    OwnedText text = compose(pFormat, args);
    va_end(args);
    fprintf(s_pOut, "%s\n", OV_mediumShown(text.get()).c_str());
}

void OV_mediumTell(const char *pFormat, ...)
{
    va_list args;

    va_start(args, pFormat);
    OwnedText text = compose(pFormat, args);
    va_end(args);
    fprintf(stderr, "ovmedium: %s\n", withoutControls(text.get(), true).c_str());
}

void OV_mediumPrintJson(const char *pCommand, const nlohmann::ordered_json &answer)
{
    nlohmann::ordered_json whole = {
        {"tool",    "ovmedium"},
        {"command", pCommand  }
    };

    whole.update(answer);
    fprintf(s_pOut, "%s\n",
            whole.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace).c_str());
}

void OV_mediumShowProgress(const char *pWhat, size_t iDone, size_t iTotal)
{
    static const bool s_bTerminal = isatty(STDERR_FILENO) != 0;
    static struct timespec s_shown = {};
    struct timespec now = {};

    if (!s_bTerminal)
        return;
    if (!pWhat) {
        fputs("\r\033[K", stderr);
        return;
    }
    (void)clock_gettime(CLOCK_MONOTONIC, &now); /* fails for a bad clock only */
    if (now.tv_sec == s_shown.tv_sec && now.tv_nsec - s_shown.tv_nsec < SHOW_NSEC)
        return;
    s_shown = now;
    fprintf(stderr, "\r%s: %zu of %zu\033[K", pWhat, iDone, iTotal);
}

bool OV_mediumCloseOutput()
{
    const bool bFailed = ferror(s_pOut) != 0;

    if (fclose(s_pOut) == 0 && !bFailed)
        return true;
    OV_mediumTell("the result could not be written: %s", strerror(errno));
    return false;
}
