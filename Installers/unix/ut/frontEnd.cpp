#include "ut/frontEnd.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "ut/strprint.h"

/* Not every text has an end of line: a box needs none. */
static void printError(const char *pText, const char *)
{
    const size_t iLength = strlen(pText);

    fputs(pText, stderr);
    if (iLength && pText[iLength - 1] != '\n')
        fputc('\n', stderr);
}

static int printQuestion(const char *pText, const char *pFirst, const char *, const char *)
{
    printf("%s", pText ? pText : "");
    printf("Returning %s\n", pFirst ? pFirst : "");
    (void)fflush(stdout); /* both processes of a run print */
    return 0;
}

static int printForMedium(const char *pText, const char *, const char *, char **)
{
    return printQuestion(pText, "Continue", nullptr, nullptr);
}

static void doNothing() {}

static struct _WidgetRec *noShell()
{
    return nullptr;
}

const OV_FrontEnd OV_instPrinting = {
    false, printError, printQuestion, printForMedium, nullptr, doNothing, doNothing, noShell,
};

static const OV_FrontEnd *s_pFrontEnd = &OV_instPrinting;

const OV_FrontEnd *OV_instFrontEnd()
{
    return s_pFrontEnd;
}

void OV_instUseFrontEnd(const OV_FrontEnd *pFrontEnd)
{
    s_pFrontEnd = pFrontEnd ? pFrontEnd : &OV_instPrinting;
}

bool OV_instHasDialogs()
{
    return s_pFrontEnd->bDialogs;
}

int OV_instAsk(const char *pText, const char *pFirst, const char *pSecond, const char *pThird)
{
    return s_pFrontEnd->fpAsk(pText, pFirst, pSecond, pThird);
}

char *OV_instVMessage(const char *pFormat, va_list args)
{
    char *pText = OV_instVStrprint(pFormat, args);

    if (!pText) {
        fputs("Error: (OV_instError) can't build error message\n", stderr);
        exit(1);
    }
    return pText;
}

void OV_instTell(const char *pButton, const char *pFormat, ...)
{
    va_list args;

    va_start(args, pFormat);
    OwnedPrint text(OV_instVMessage(pFormat, args));
    va_end(args);
    s_pFrontEnd->fpTell(text.get(), pButton);
}
