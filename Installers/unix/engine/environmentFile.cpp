#include "engine/environmentFile.h"

#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <sys/stat.h>

#include "engine/userHome.h"
#include "ut/OVinstFileUtils.h"
#include "ut/guard.h"
#include "ut/owned.h"
#include "ut/replaceFile.h"
#include "ut/shellWord.h"
#include "ut/wholeFile.h"

static const char s_caSource[] = "KIVO_FILE"; /* so on the media of every product */
static const char s_caCreated[] = ".kivo_2.01";
static const char s_caTemporary[] = ".kivo_install_tmp_file";

static mode_t currentUmask()
{
    const mode_t iMask = umask(0);

    (void)umask(iMask); /* never fails */
    return iMask;
}

/* Not by a command: a copy that root makes in somebody's home would follow a link that he has
 * planted there. What comes in between is replaced, not followed. */
void copy_orvane_file(const char *pHome, const char *pDestination, uid_t uid, gid_t gid)
{
    OwnedText path(OV_instBuildPath(pDestination, s_caSource, nullptr));
    OwnedFd opened(path ? OV_instGuardedOpenOwn(path.get(), O_RDONLY) : -1);
    OwnedFile source(opened.iFd < 0 ? nullptr : fdopen(opened.iFd, "r"));
    struct stat asNew;
    OV_Replacement copy;

    if (source)
        (void)opened.release(); /* the stream closes it */
    if (!source || fstat(fileno(source.get()), &asNew) < 0 || !S_ISREG(asNew.st_mode)) {
        fprintf(stderr, "ERROR: Can't find file: %s\n", path ? path.get() : s_caSource);
        return;
    }
    asNew.st_uid = geteuid();
    asNew.st_gid = getegid();
    asNew.st_mode &= 0777 & ~currentUmask(); /* as a command that copies does */
    if (OV_instBeginReplacement(&copy, pHome, s_caTemporary, s_caSource, &asNew) == 0)
        (void)OV_instEndReplacement(&copy, OV_instCopyWhole(source.get(), copy.pStream) == 0);
    /* The source's owner, not the copy's: that file its user could always rewrite. */
    (void)fchown(fileno(source.get()), uid, gid);
}

/* Where the user's own directories are, for the shell that reads the file: all but the variable at
 * its end is taken literally. */
static std::string userRoot()
{
    std::string home = GetDefaultUserHomeWithEnvVar();
    const size_t iVariable = home.rfind('$');
    OwnedText quoted(OV_instShellQuotedPath(home.substr(0, iVariable).c_str()));

    return (quoted ? quoted.get() : "") + home.substr(iVariable);
}

static void writeEnvironment(FILE *pFile, const char *pHome)
{
    OwnedText word(OV_instShellWord(pHome));

    fputs("# The environment of the application, made by setup.\n", pFile);
    fprintf(pFile, "OV_HOME=%s; export OV_HOME\n", word ? word.get() : "");
    fprintf(pFile, "OV_USER_ROOT=\"%s\"; export OV_USER_ROOT\n", userRoot().c_str());
    fputs("PATH=\"$OV_HOME/Application/bin:$PATH\"; export PATH\n", pFile);
}

void create_orvane_file(const char *pHome, const char *pDestination, uid_t uid, gid_t gid)
{
    std::string destination(pDestination);
    struct stat asNew = {};
    OV_Replacement file;

    if (destination.size() > 1 && destination.back() == '/')
        destination.pop_back();
    asNew.st_uid = uid;
    asNew.st_gid = gid;
    asNew.st_mode = S_IRUSR | S_IWUSR | S_IRGRP | S_IROTH;
    if (OV_instBeginReplacement(&file, pHome, s_caTemporary, s_caCreated, &asNew) < 0)
        return;
    writeEnvironment(file.pStream, destination.c_str());
    (void)OV_instEndReplacement(&file, true); /* the old file is still there when it fails */
}
