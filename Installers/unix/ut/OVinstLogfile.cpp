#include "ut/OVinstLogfile.h"

#include <cstdarg>
#include <cstring>
#include <ctime>

#include "ut/guardedFile.h"

enum { HEADER_SIZE = 256 };

char g_caLogName[4097] = "";

int OV_instInitLogfile(const char *pPath)
{
    if (!pPath || !*pPath || strlen(pPath) >= sizeof g_caLogName)
        return -1;
    memmove(g_caLogName, pPath, strlen(pPath) + 1); /* it may be g_caLogName itself */
    FILE *pLog = OV_instGuardedFopen(g_caLogName, "a");
    if (!pLog)
        return -1;
    (void)fclose(pLog); /* nothing was written */
    return 0;
}

int OV_instInitLogfileAndTimeStamp(const char *pPath)
{
    char caHeader[HEADER_SIZE];
    time_t now = time(nullptr);
    struct tm local = {};

    if (OV_instInitLogfile(pPath) < 0)
        return -1;
    (void)localtime_r(&now, &local); /* fails only for years that no tm can hold */
    if (!strftime(caHeader, sizeof caHeader,
                  "\n>>>>>>> SETUP Log File created on %Y-%m-%d-%Hh%M <<<<<<<\n", &local))
        caHeader[0] = '\0';
    (void)OV_instUpdateLogfile("%s", caHeader); /* the log stops nothing from here on */
    (void)OV_instUpdateLogfile("Starting Installation\n");
    return 0;
}

void OV_instLogEnd(bool bFailed)
{
    /* The log is optional. */
    (void)OV_instUpdateLogfile("%s", bFailed ? "Error during the installation\n"
                                             : "Installation Completed\n");
}

FILE *OV_instOpenLogfile()
{
    if (!g_caLogName[0])
        return nullptr;
    FILE *pLog = OV_instGuardedFopen(g_caLogName, "a");
    if (!pLog) /* one caller is named whichever it is: scripts know the line so */
        (void)fprintf(stderr, "Error: (OV_instUpdateLogfile) can't open '%s'\n", g_caLogName);
    return pLog;
}

int OV_instUpdateLogfile(const char *pFormat, ...)
{
    va_list args;

    if (!pFormat)
        return -1;
    FILE *pLog = OV_instOpenLogfile();
    if (!pLog)
        return 0;
    va_start(args, pFormat);
    (void)vfprintf(pLog, pFormat, args);
    va_end(args);
    (void)fclose(pLog); /* a lost record never stops an installation */
    return 0;
}
