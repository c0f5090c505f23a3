#include "engine/userHome.h"

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>

static char *g_UserHome; /* a heap string, or null */

static bool isElsewhere(const char *pHome)
{
    return g_UserHome && (!pHome || strcmp(g_UserHome, pHome) != 0);
}

void SetDefaultUserHome(const char *pPath)
{
    if (pPath == g_UserHome)
        return;
    char *pCopy = pPath ? strdup(pPath) : nullptr;
    free(g_UserHome);
    g_UserHome = pCopy;
}

const char *GetDefaultUserHome()
{
    static char s_caPath[PATH_MAX];
    const char *pHome = getenv("HOME");
    const char *pUser = getenv("USER");

    if (isElsewhere(pHome)) {
        (void)snprintf(s_caPath, sizeof s_caPath, "%s/%s", g_UserHome, pUser ? pUser : "");
        return s_caPath;
    }
    if (!g_UserHome)
        SetDefaultUserHome(pHome);
    return g_UserHome;
}

const char *GetDefaultUserHomeWithEnvVar()
{
    static char s_caPath[PATH_MAX];

    if (isElsewhere(getenv("HOME")))
        (void)snprintf(s_caPath, sizeof s_caPath, "%s/$USER", g_UserHome);
    else
        (void)snprintf(s_caPath, sizeof s_caPath, "$HOME");
    return s_caPath;
}
