#include "ut/guardedRoot.h"

#include <climits>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <utility>

#include "ut/OVinstFileUtils.h"

static OV_GuardedRoot s_root;

OV_GuardedRoot *OV_instGuardedRoot()
{
    return &s_root;
}

void OV_instNameRoot(OV_GuardedRoot *pRoot, const char *pPath)
{
    /* nothing below a longer one can be opened */
    std::string text = pPath && strlen(pPath) < PATH_MAX ? pPath : "";

    (void)OV_instRemoveExtraSlash(&text[0]); /* fails for null only */
    text.resize(strlen(text.c_str()));
    if (text.size() > 1 && text.back() == '/')
        text.pop_back();
    pRoot->text = text;
    pRoot->real.clear();
    pRoot->opened.reset(-1);
    pRoot->status = {};
}

/* The root is reached as the system resolves it: whoever started setup chose it, links and all. */
int OV_instOpenRoot(OV_GuardedRoot *pRoot)
{
    if (pRoot->opened.iFd >= 0)
        return pRoot->opened.iFd;
    OwnedFd opened(open(pRoot->text.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (opened.iFd < 0 || fstat(opened.iFd, &pRoot->status) < 0)
        return -1;
    OwnedText real(realpath(pRoot->text.c_str(), nullptr));
    pRoot->real = real ? real.get() : "";
    pRoot->opened = std::move(opened);
    return pRoot->opened.iFd;
}

static const char *below(const std::string &root, const char *pPath)
{
    if (root.empty())
        return nullptr;
    for (const char cRoot : root) {
        if (*pPath++ != cRoot)
            return nullptr;
        if (cRoot == '/')
            pPath += strspn(pPath, "/");
    }
    if (*pPath && *pPath != '/' && pPath[-1] != '/') /* a longer name; "/" itself ends one */
        return nullptr;
    return pPath + strspn(pPath, "/");
}

const char *OV_instBelowRoot(const OV_GuardedRoot *pRoot, const char *pPath)
{
    return below(pRoot->text, pPath);
}

const char *OV_instBelowRealRoot(const OV_GuardedRoot *pRoot, const char *pPath)
{
    const char *pBelow = below(pRoot->text, pPath);

    return pBelow ? pBelow : below(pRoot->real, pPath);
}

bool OV_instIsRoot(const OV_GuardedRoot *pRoot, const struct stat *pStatus)
{
    return pStatus->st_dev == pRoot->status.st_dev && pStatus->st_ino == pRoot->status.st_ino;
}
