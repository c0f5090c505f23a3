#include "ut/uiut.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "ut/owned.h"
#include "ut/strprint.h"

Widget OV_instGetMainTopLevelShell()
{
    return nullptr;
}

int OV_instOkCancelMessageBox(Widget, const char *pMessage, const char *pOk, const char *,
                              const char *)
{
    printf("%s", pMessage ? pMessage : "");
    printf("Returning %s\n", pOk);
    (void)fflush(stdout); /* both processes of a run print */
    return 0;
}

int OV_instDisplayMessage(Widget, const char *, const char *, const char *, const char *pFormat,
                          ...)
{
    va_list args;

    if (!pFormat)
        return 0;
    va_start(args, pFormat);
    OwnedText text(OV_instVStrprint(pFormat, args));
    va_end(args);
    if (!text) {
        fputs("Error: (OV_instError) can't build error message\n", stderr);
        exit(1);
    }
    fputs(text.get(), stderr);
    return 0;
}

void OV_instDispatchPending() {}
