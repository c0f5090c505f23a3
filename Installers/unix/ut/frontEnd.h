/* How a person is reached: a table of functions. The description's reader and the engine tell, ask
 * and show nothing by any other way, so they run without a window. The table in use prints until
 * the dialogs, at their start, put their own in its place. All texts are in the notation that
 * dialogs have for theirs, and never formats. */
#ifndef OVINST_UT_FRONTEND_H
#define OVINST_UT_FRONTEND_H

#include <cstdarg>
#include <sys/types.h>

struct _WidgetRec; /* the toolkit's widget, as modules know it */

struct OV_FrontEnd {
    /* Whether somebody sits before dialogs; else the run is unattended. */
    bool bDialogs;

    /* Tells an error, to be acknowledged by a button of that label. */
    void (*fpTell)(const char *pText, const char *pButton);

    /* Asks, with up to three buttons (the second and third label may be null): 0, 1 or 2 for the
     * one that was pressed. */
    int (*fpAsk)(const char *pText, const char *pFirst, const char *pSecond, const char *pThird);

    /* Asks what to do about a file of the medium that cannot be opened: 0 goes on without it, 2
     * gives up, and 1 looks elsewhere. Then *ppPicked becomes the directory that holds pFile, a new
     * string, or stays as it was when none was picked. The search starts in pSource. */
    int (*fpAskForMedium)(const char *pText, const char *pFile, const char *pSource,
                          char **ppPicked);

    /* Follows a run from now on, whose records come from iFd; returns at once. Null where whoever
     * started the run follows it himself. */
    void (*fpFollowRun)(int iFd, pid_t iChild);

    /* The process has become the installing child: what it has inherited of the display is its
     * parent's, and it shows what it has to show on a connection of its own. */
    void (*fpEnterChild)();

    /* Lets the windows of this process catch up in the midst of long work. */
    void (*fpDispatchPending)();

    /* The shell that modules get to open windows below, or null. In the child it is made when it is
     * first asked for. */
    struct _WidgetRec *(*fpModuleShell)();
};

/* The table in use; never null. */
const OV_FrontEnd *OV_instFrontEnd();

/* Puts another table in its place, which has to stay; null puts the printing one back. */
void OV_instUseFrontEnd(const OV_FrontEnd *pFrontEnd);

/* The table that prints: errors on standard error; questions on standard output, each answered by
 * its first button; no windows. */
extern const OV_FrontEnd OV_instPrinting;

/* Short for members of the table in use. */
bool OV_instHasDialogs();
int OV_instAsk(const char *pText, const char *pFirst, const char *pSecond = nullptr,
               const char *pThird = nullptr);

/* Tells an error that is formatted by OV_instVStrprint. */
void OV_instTell(const char *pButton, const char *pFormat, ...)
    __attribute__((format(printf, 2, 3)));

/* The formatted text of a message, for OwnedPrint to hold; a text that cannot be built ends the
 * process with status 1. */
char *OV_instVMessage(const char *pFormat, va_list args);

#endif
