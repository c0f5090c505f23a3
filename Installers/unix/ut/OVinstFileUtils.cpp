#include "ut/OVinstFileUtils.h"

#include <cstdarg>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "ut/owned.h"

enum { PIECE_SIZE = 102400 }; /* with the terminating zero: 102399 bytes count as one line */

/* A line under construction. */
struct LineText {
    OwnedText text;
    size_t iLength;
    size_t iSize; /* allocated */
};

static char s_caPiece[PIECE_SIZE];

/* Room that pText needs behind a path that may want a slash. */
static size_t roomFor(const char *pText)
{
    return strlen(pText) + 1;
}

bool OV_instIsThere(const char *pPath)
{
    struct stat status;

    return pPath && stat(pPath, &status) == 0;
}

char *OV_instBuildPath(const char *pFirst, ...)
{
    if (!pFirst)
        return nullptr;
    va_list args;
    size_t iSize = roomFor(pFirst);
    va_start(args, pFirst);
    while (const char *pNext = va_arg(args, const char *))
        iSize += roomFor(pNext);
    va_end(args);

    char *pPath = static_cast<char *>(malloc(iSize));
    if (!pPath)
        return nullptr;
    char *pEnd = stpcpy(pPath, pFirst);
    va_start(args, pFirst);
    while (const char *pNext = va_arg(args, const char *)) {
        if (pEnd == pPath || pEnd[-1] != '/') /* an empty start is the root: "" and "a" make "/a" */
            *pEnd++ = '/';
        pEnd = stpcpy(pEnd, pNext);
    }
    va_end(args);
    (void)OV_instRemoveExtraSlash(pPath); /* fails for null only */
    return pPath;
}

int OV_instRemoveExtraSlash(char *pPath)
{
    if (!pPath)
        return 1;
    char *pTo = pPath;
    for (const char *pFrom = pPath; *pFrom; pFrom++) {
        if (*pFrom != '/' || pTo == pPath || pTo[-1] != '/')
            *pTo++ = *pFrom;
    }
    *pTo = '\0';
    return 0;
}

char *OV_instDirname(const char *pPath)
{
    if (!pPath || strlen(pPath) > OV_INST_PATH_SIZE)
        return nullptr;
    char caPath[OV_INST_PATH_SIZE + 1];
    strcpy(caPath, pPath);
    (void)OV_instRemoveExtraSlash(caPath); /* fails for null only */
    size_t iLength = strlen(caPath);
    if (iLength && caPath[iLength - 1] == '/')
        caPath[iLength - 1] = '\0';

    char *pSlash = strrchr(caPath, '/');
    if (!pSlash) /* the root, too, has lost its only slash: walks upwards end there at "./" */
        return strdup("./");
    pSlash[1] = '\0';
    return strdup(caPath);
}

char *OV_instBasename(const char *pPath)
{
    if (!pPath || strlen(pPath) > OV_INST_PATH_SIZE)
        return nullptr;
    const char *pSlash = strrchr(pPath, '/');
    return strdup(pSlash ? pSlash + 1 : pPath);
}

char *OV_instGetRealPath(const char *pPath)
{
    OwnedText directory(OV_instDirname(pPath));
    if (!directory)
        return nullptr;
    OwnedText resolved(realpath(directory.get(), nullptr));
    if (!resolved) {
        (void)fprintf(stderr, "Error: can't obtain realpath of <%s>\n", directory.get());
        return nullptr;
    }
    return OV_instBuildPath(resolved.get(), "", nullptr); /* adds the slash where it is missing */
}

char *OV_instGetPartitionDirectory(const char *pPath)
{
    OwnedText path(pPath && *pPath ? strdup(pPath) : getcwd(nullptr, 0));

    while (path) {
        struct stat status;
        if (stat(path.get(), &status) == 0)
            return S_ISDIR(status.st_mode) ? path.release() : nullptr;
        if (strcmp(path.get(), "./") == 0 || strcmp(path.get(), "/") == 0)
            return nullptr;
        path.reset(OV_instDirname(path.get()));
    }
    return nullptr;
}

char *OV_instReadFileContent(const char *pPath)
{
    if (!pPath || !*pPath)
        return nullptr;
    OwnedFd file(open(pPath, O_RDONLY | O_CLOEXEC));
    struct stat status;
    if (file.iFd < 0 || fstat(file.iFd, &status) < 0)
        return nullptr;
    size_t iSize = static_cast<size_t>(status.st_size);
    OwnedText content(static_cast<char *>(malloc(iSize + 1)));
    if (!content || read(file.iFd, content.get(), iSize) != status.st_size)
        return nullptr;
    content.get()[iSize] = '\0';
    return content.release();
}

/* fgets into s_caPiece, but returns the number of bytes, so that a zero byte in a line cannot
 * hide its newline. 0 stands for the end of the file or a read error. */
static size_t readPiece(FILE *pFile)
{
    size_t iLength = 0;
    int iByte = 0;

    while (iLength < PIECE_SIZE - 1 && iByte != '\n') {
        iByte = getc_unlocked(pFile);
        if (iByte == EOF)
            break;
        s_caPiece[iLength++] = static_cast<char>(iByte);
    }
    s_caPiece[iLength] = '\0';
    return iLength;
}

/* Grows by doubling: a line of many pieces is still copied in linear time. */
static int appendPiece(LineText *pLine, size_t iLength)
{
    size_t iNeeded = pLine->iLength + iLength + 1;

    if (iNeeded > pLine->iSize) {
        size_t iSize = iNeeded > 2 * pLine->iSize ? iNeeded : 2 * pLine->iSize;
        char *pGrown = static_cast<char *>(realloc(pLine->text.get(), iSize));
        if (!pGrown)
            return -1;
        (void)pLine->text.release(); /* realloc has taken it */
        pLine->text.reset(pGrown);
        pLine->iSize = iSize;
    }
    memcpy(pLine->text.get() + pLine->iLength, s_caPiece, iLength);
    pLine->iLength += iLength;
    pLine->text.get()[pLine->iLength] = '\0';
    return 0;
}

static void addPart(OV_LineParts *pParts, size_t iOffset, size_t iLength, bool bEnded)
{
    pParts->parts.push_back({iOffset, pParts->iNextLine, pParts->iNextColumn});
    pParts->iNextLine += bEnded ? 1 : 0;
    pParts->iNextColumn = bEnded ? 1 : pParts->iNextColumn + static_cast<int>(iLength);
}

char *OV_instGetline(FILE *pFile, int *piLine)
{
    return OV_instGetlineParts(pFile, piLine, nullptr);
}

char *OV_instGetlineParts(FILE *pFile, int *piLine, OV_LineParts *pParts)
{
    LineText line = {nullptr, 0, 0};

    if (!pFile)
        return nullptr;
    if (pParts)
        pParts->parts.clear();
    while (!feof(pFile)) {
        size_t iLength = readPiece(pFile);
        if (piLine)
            ++*piLine; /* the read that finds the end counts as well */
        if (!iLength)
            return nullptr; /* a line cut short by the end of the file is dropped */
        bool bEnded = s_caPiece[iLength - 1] == '\n';
        if (bEnded)
            s_caPiece[iLength - 1] = '\0';
        if (pParts)
            addPart(pParts, line.iLength, iLength, bEnded);
        if (appendPiece(&line, strlen(s_caPiece)) < 0)
            return nullptr;
        if (!bEnded)
            continue;
        if (!line.iLength || line.text.get()[line.iLength - 1] != '\\')
            break;
        line.text.get()[line.iLength - 1] = ' ';
    }
    return line.text.release();
}

int OV_instNeedNewline(FILE *pFile)
{
    if (!pFile)
        return 1;
    off_t lPosition = ftello(pFile);
    if (lPosition < 0)
        return 1;
    int iLast = fseeko(pFile, -1, SEEK_END) == 0 ? getc(pFile) : EOF;
    (void)fseeko(pFile, lPosition, SEEK_SET); /* a position that ftello gave */
    return iLast != '\n';
}

char **OV_instSplitStringOn(const char *pText, char cSeparator, int *piCount)
{
    size_t iSeparators = 0;
    int iUnused = 0;

    if (!piCount)
        piCount = &iUnused;
    *piCount = 0;
    if (!pText || !cSeparator)
        return nullptr;
    for (const char *pAt = pText; *pAt; pAt++)
        iSeparators += *pAt == cSeparator;

    char **apPieces = static_cast<char **>(calloc(iSeparators + 2, sizeof *apPieces));
    if (!apPieces)
        return nullptr;
    for (size_t i = 0; i <= iSeparators; i++) {
        const char *pEnd = strchrnul(pText, cSeparator);
        apPieces[i] = strndup(pText, static_cast<size_t>(pEnd - pText));
        if (!apPieces[i]) {
            OV_instFreeStringArray(apPieces);
            *piCount = 0;
            return nullptr;
        }
        ++*piCount;
        pText = pEnd + 1; /* not looked at behind the last piece */
    }
    return apPieces;
}

void OV_instFreeStringArray(char **apStrings)
{
    if (!apStrings)
        return;
    for (char **ppString = apStrings; *ppString; ppString++)
        free(*ppString);
    free(apStrings);
}
