/* What a custom-function module compiles against, in C or in C++.
 *
 * A module is a shared object below "SetupFiles" on the medium. It exports
 *   double ModuleVersion = OV_MODULE_VERSION;
 *   int32_t initModule(struct _OV_instCDinst *, struct _OV_CustomData *);   called before every use
 * and the functions that the description names, of the same type as initModule. A function returns
 * OV_INST_NO_ERROR, or another value for a failure; what initModule returns is not looked at. What
 * a function reports goes through fpUpdate, one line each: "+COUNT text" for work done, "-1 text"
 * for an error, "#Log:text" for the setup log. Flush after each line, and let no text bring a line
 * end of its own: what follows it would be a record.
 *
 * When a function is called, in the order of a run:
 *
 *   SIZE              when setup starts, for every package, chosen or not, twice: with the block
 *                     size 1 and with the file system's. A failure ends setup.
 *   PRE, INIT, POST   with iDelete set, for the packages that are removed. PRE: their files are
 *                     still there; stop what uses them. INIT: files are removed, in the order of
 *                     the description, and behind a suite's last package the directories of its
 *                     "Mkdir" lines; remove what the function has made, and only that. POST: the
 *                     files are gone; what is removed only now leaves its directory behind.
 *   PRE, INIT         with iDelete 0, for the packages that are added. PRE: nothing is there yet;
 *                     look whether it can be. INIT: files are copied, in the order of the
 *                     description; make what the function has to make.
 *   REGISTRY, POST    likewise, when all files are there; look at them, use them.
 *
 * A pass is over for all packages before the next begins. A removal has no REGISTRY pass; "Remove
 * all" is a removal like any other. A package that stays, because another chosen suite needs it or
 * because nothing changes, gets the SIZE pass only. In INIT, what is to be made may be there
 * already, and what is to be removed may be gone: neither is a failure. A function that fails stops
 * nothing; the run counts as failed.
 *
 * The SIZE pass runs in the process that shows the dialogs, all others in the one that installs:
 * what a function keeps in variables from then on does not come back to the dialogs. */
#ifndef OVINST_MODULE_H
#define OVINST_MODULE_H

#include <stdint.h>
#include <stdio.h>

#define OV_MODULE_VERSION 1.1

#ifdef __cplusplus
extern "C" {
#endif

enum OV_CustomPass {
    OV_CUSTOM_RESET = 0, /* no module is called with it */
    OV_CUSTOM_SIZE = 1,  /* only iSize is asked for: the block size on entry, bytes on return */
    OV_CUSTOM_PRE = 2,
    OV_CUSTOM_INIT = 3, /* files are copied, or removed, in this pass */
    OV_CUSTOM_REGISTRY = 4,
    OV_CUSTOM_POST = 5,
    OV_CUSTOM_FINISH = 6 /* no module is called with it */
};

/* Every removal is OV_INST_DELETE_MODE; the last value is kept for setup itself. */
enum OV_InstMode { OV_INST_INSTALL_MODE = 0, OV_INST_DELETE_MODE = 1, OV_INST_DELETE_ALL_MODE = 2 };

enum OV_InstErrorCode { OV_INST_NO_ERROR = 0, OV_INST_EXIT_SETUP = 100, OV_INST_ERROR = 101 };

struct _WidgetRec;     /* the toolkit's widget */
struct _OV_instCDinst; /* setup's own record of the medium; opaque to modules */

/* All texts belong to setup and are valid during the call only. */
struct _OV_CustomData {
    struct _WidgetRec *pTls; /* the main top-level shell; null in an unattended run */
    FILE *fpUpdate;          /* the progress pipe; null in the size pass */
    FILE *fpLog;             /* the setup log, open for appending; do not close. Null without a log,
                              * in the size pass and for initModule */
    const char *pRootDest;   /* the chosen directory. Like all three it ends in a slash; null in the
                              * size pass */
    const char *pCommonDest; /* the products' common directory in it; null in the size pass */
    const char *pDest;       /* the product's own directory in it */
    const char *pFrom;       /* the medium's directory. Where the product is installed already, all
                              * but the size pass are told where the medium was at that time */
    const char *pData;       /* the description's argument text */
    const char *pPackageName;
    const char *pSuiteName; /* null in the size pass */
    int32_t iDelete;        /* an OV_InstMode */
    int32_t iSize;
    enum OV_CustomPass ovPass;
};

typedef int32_t (*OV_CustomFunction)(struct _OV_instCDinst *pRoot, struct _OV_CustomData *pData);

#ifdef __cplusplus
}
#endif

#endif
