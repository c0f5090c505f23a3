/* What a custom-function module compiles against, in C or in C++.
 *
 * A module is a shared object below "SetupFiles" on the medium. It exports
 *   double ModuleVersion = OV_MODULE_VERSION;
 *   int32_t initModule(struct _OV_instCDinst *, struct _OV_CustomData *);   called before every use
 * and the functions that the description names, of the same type as initModule. A function is
 * called once in every pass; it returns OV_INST_NO_ERROR, or another value for a failure. What it
 * reports goes through fpUpdate, one line each: "+COUNT text" for work done, "-1 text" for an
 * error, "#Log:text" for the setup log. Flush after each line. */
#ifndef OVINST_MODULE_H
#define OVINST_MODULE_H

#include <stdint.h>
#include <stdio.h>

#define OV_MODULE_VERSION 1.1

#ifdef __cplusplus
extern "C" {
#endif

enum OV_CustomPass {
    OV_CUSTOM_RESET = 0,
    OV_CUSTOM_SIZE = 1, /* only iSize is asked for: the block size on entry, bytes on return */
    OV_CUSTOM_PRE = 2,
    OV_CUSTOM_INIT = 3, /* files are copied in this pass */
    OV_CUSTOM_REGISTRY = 4,
    OV_CUSTOM_POST = 5,
    OV_CUSTOM_FINISH = 6
};

enum OV_InstMode { OV_INST_INSTALL_MODE = 0, OV_INST_DELETE_MODE = 1, OV_INST_DELETE_ALL_MODE = 2 };

enum OV_InstErrorCode { OV_INST_NO_ERROR = 0, OV_INST_EXIT_SETUP = 100, OV_INST_ERROR = 101 };

struct _WidgetRec;     /* the toolkit's widget */
struct _OV_instCDinst; /* setup's own record of the medium; opaque to modules */

/* All texts belong to setup and are valid during the call only. */
struct _OV_CustomData {
    struct _WidgetRec *pTls; /* the main top-level shell; null in an unattended run */
    FILE *fpUpdate;          /* the progress pipe; null in the size pass */
    FILE *fpLog;             /* the setup log, open for appending; may be null; do not close */
    const char *pRootDest;
    const char *pCommonDest;
    const char *pDest;
    const char *pFrom; /* the medium's directory */
    const char *pData; /* the description's argument text */
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
