#include "engine/startup.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include "engine/runReport.h"
#include "engine/setupState.h"
#include "engine/unattended.h"
#include "ut/OVinstFileUtils.h"
#include "ut/brokenPipes.h"
#include "ut/debugLevel.h"
#include "ut/owned.h"
#include "ut/strprint.h"

static const rlim_t s_ulStackNeeded = 256UL * 1024, s_ulStackWanted = 8UL * 1024 * 1024; /* bytes */

static const char s_caVersion[] = "Setup Version=0311-11:57";
static const char s_caDescription[] = "cdinst.dat";

/* putenv keeps the very strings. */
static char s_caLibraryPath[] = "LD_LIBRARY_PATH=";
static char s_caPath[] = "PATH=/usr/local/sbin:/usr/sbin:/sbin:/bin:/sbin:/usr/bin:/usr/sbin:"
                         "/usr/local/bin:/usr/local/sbin:/usr/bin/X11:/usr/X11R6/bin:/root/bin";

/* What the options say. */
struct Options {
    char *pDescription;
    char *pDestination;
    bool bNoRoot;
    bool bCommandLine;
};

/* What would make the commands do something else than they are told. */
static const char *const s_apMisleading[] = {"TAR_OPTIONS",     "BZIP",   "BZIP2",
                                             "POSIXLY_CORRECT", "CDPATH", nullptr};

/* A file that is opened later must not become a standard stream that was handed over closed. */
static void openStandardStreams()
{
    int iFd;

    do {
        iFd = open("/dev/null", O_RDWR);
    } while (iFd >= 0 && iFd <= STDERR_FILENO);
    if (iFd >= 0)
        (void)close(iFd); /* nothing was written */
}

/* A stack that overflows ends the program without a word, so one that is too small is enlarged,
 * which takes effect at once, or told. */
static void provideStack()
{
    struct rlimit limit;

    if (getrlimit(RLIMIT_STACK, &limit) < 0 || limit.rlim_cur >= s_ulStackNeeded)
        return;
    limit.rlim_cur = limit.rlim_max < s_ulStackWanted ? limit.rlim_max : s_ulStackWanted;
    if (limit.rlim_max >= s_ulStackNeeded && setrlimit(RLIMIT_STACK, &limit) == 0)
        return;
    fprintf(stderr, "Error: the stack is limited to %lu KB, setup needs %lu KB\n",
            limit.rlim_cur / 1024, s_ulStackNeeded / 1024);
    exit(1);
}

void OV_instPrepareEnvironment()
{
    provideStack();
    openStandardStreams();
    OV_instWarnOfRefusals();
    OV_instCatchBrokenPipes(); /* whoever stops reading what is printed stops no run */
    for (const char *const *ppName = s_apMisleading; *ppName; ppName++)
        (void)unsetenv(*ppName);   /* fails for bad names only */
    (void)putenv(s_caLibraryPath); /* fail without memory only, which the next steps notice */
    (void)putenv(s_caPath);
    if (getenv("OVINST_DEBUG_MODE"))
        OV_instSetDebugLevel(1);
    const char *pRedirect = getenv("OVINST_REDIRECT");
    if (pRedirect)
        OV_instSetRedirect(pRedirect);
}

static void setCdinstDirectory(const char *pDirectory)
{
    if (OV_instSetCdinstDirectory(pDirectory) < 0)
        fputs("Error: OV_instSetCdinstDirectory fatal error\n", stderr);
}

/* ---- the options ---- */

static void showVersion(Options *, const char *)
{
    fprintf(stderr, "%s\n", s_caVersion);
    exit(1);
}

static void setNoRoot(Options *pOptions, const char *)
{
    pOptions->bNoRoot = true;
}

static void setCommandLine(Options *pOptions, const char *)
{
    pOptions->bCommandLine = true;
}

static char *copyArgument(const char *pArgument)
{
    char *pCopy = strdup(pArgument);

    if (!pCopy) {
        fprintf(stderr, "Error: duplicating '%s'\n", pArgument);
        exit(1);
    }
    return pCopy;
}

static void setDestination(Options *pOptions, const char *pArgument)
{
    free(pOptions->pDestination);
    pOptions->pDestination = copyArgument(pArgument);
}

static void setDescription(Options *pOptions, const char *pArgument)
{
    OwnedText directory(OV_instDirname(pArgument));

    free(pOptions->pDescription);
    pOptions->pDescription = copyArgument(pArgument);
    setCdinstDirectory(directory.get());
}

struct CommandOptionRow {
    const char *pName;
    void (*apply)(Options *pOptions, const char *pArgument);
    const char *pMissing; /* the message for a missing argument; null when there is none */
};

static const CommandOptionRow s_aOptions[] = {
    {"-v",       showVersion,    nullptr                                     },
    {"-version", showVersion,    nullptr                                     },
    {"-noroot",  setNoRoot,      nullptr                                     },
    {"-cmdline", setCommandLine, nullptr                                     },
    {"-dest",    setDestination, "Error: option -dest requires an argument\n"},
    {"-from",    setDescription, "Error: option -from requires an argument\n"},
    {nullptr,    nullptr,        nullptr                                     },
};

static const CommandOptionRow *findOption(const char *pName)
{
    for (const CommandOptionRow *pRow = s_aOptions; pRow->pName; pRow++)
        if (strcmp(pRow->pName, pName) == 0)
            return pRow;
    fprintf(stderr, "Error: invalid option '%s'\n", pName);
    exit(1);
}

static void readOptions(int argc, char **argv, Options *pOptions)
{
    for (int i = 1; i < argc; i++) {
        const CommandOptionRow *pRow = findOption(argv[i]);

        if (pRow->pMissing && ++i >= argc) {
            fputs(pRow->pMissing, stderr);
            exit(1);
        }
        pRow->apply(pOptions, argv[i]);
    }
}

/* ---- what the options leave open ---- */

static void findRunningDirectory(const char *pProgram)
{
    OwnedText directory(OV_instGetRealPath(pProgram));

    if (!directory || OV_instSetRunningDirectory(directory.get()) < 0) {
        fprintf(stderr, "Error: can't get directory of %s\n", pProgram);
        exit(1);
    }
}

static char *descriptionBeside(const char *pProgram)
{
    OwnedText directory(OV_instDirname(pProgram));

    if (!directory) {
        fprintf(stderr, "Error: can't get dirname of %s\n", pProgram);
        exit(1);
    }
    char *pPath = OV_instStrPrint("%s%s", directory.get(), s_caDescription);
    if (!pPath) {
        fputs("Error: out of memory\n", stderr);
        exit(1);
    }
    setCdinstDirectory(directory.get());
    return pPath;
}

static void checkRoot(const Options *pOptions, const char *pNoRootVariable)
{
    if (pOptions->bNoRoot || pNoRootVariable || getuid() == 0)
        return;
    fputs("Error: you need to be root to run this program\n", stderr);
    exit(1);
}

static void completeOptions(Options *pOptions, const char *pProgram)
{
    if (!pOptions->pDescription)
        pOptions->pDescription = descriptionBeside(pProgram);
    if (!pOptions->pDestination)
        pOptions->pDestination = strdup(OV_DEFAULT_DESTINATION);
    if (!pOptions->pDestination) {
        fputs("Error: building default installation path\n", stderr);
        exit(1);
    }
}

void OV_instProcessArgs(int argc, char **argv, char **ppDescription, char **ppDestination)
{
    Options options = {nullptr, nullptr, false, false};
    const char *pNoRoot = getenv("OVINST_NOROOT");

    *ppDescription = nullptr;
    *ppDestination = nullptr;
    findRunningDirectory(argv[0]);
    readOptions(argc, argv, &options);
    checkRoot(&options, pNoRoot);
    OV_instSetDestinationGiven(options.bCommandLine && options.pDestination);
    completeOptions(&options, argv[0]);
    if (options.bCommandLine) {
        const int iStatus = OV_instRunUnattended(options.pDescription, options.pDestination);
        free(options.pDescription);
        free(options.pDestination);
        exit(iStatus);
    }
    *ppDescription = options.pDescription;
    *ppDestination = options.pDestination;
}
