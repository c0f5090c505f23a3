/* How much an installation reads and writes, and whether the destination has the room. */
#ifndef OVINST_ENGINE_SIZES_H
#define OVINST_ENGINE_SIZES_H

#include <cstdint>

#include "description/model.h"

enum { OV_SIZE_TEXT = 80 }; /* what a buffer for a space text holds at least */

double OV_instTranslateBytes2Gigs(int64_t lBytes);
double OV_instTranslateBytes2Megs(int64_t lBytes);
double OV_instTranslateBytes2Ks(int64_t lBytes);

/* Bytes free for an unprivileged user on the file system of pPath, and the block size of the
 * partition that pPath is or will be on; -1 when that cannot be found out. */
int64_t OV_instGetAvailableSpace(const char *pPath);
int64_t OV_instGetBlockSize(const char *pPath);

/* Bytes of all operations, each amount rounded up to lBlock; custom functions are asked. -1 for a
 * null package or a block size of 0. A function that fails ends the process with status 1. */
int64_t OV_instGetPackageSize(_OV_InstPackage *pPackage, int64_t lBlock, const char *pFrom,
                              const char *pDest);

/* Fills in the sizes of every package for the description's destination. 0, or -1 without
 * packages or destination, or when the destination's file system cannot be examined. */
int OV_instSetSizes(_OV_instCDinst *pRoot);

/* Clears the marks that the passes over packages leave. */
void OV_instResetPackagePasses(_OV_InstPackageNode *pPackages);

/* What the selection beneath pConfig needs, less what it frees (with iAbsolute: plus). -1 without
 * packages or configuration, and for writing without destination. Nothing calls the former today.
 */
int64_t OV_instGetReadSize(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig, int iAbsolute);
int64_t OV_instGetWriteSize(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig, int iAbsolute);

/* One of the two passes behind the above: pass 0 charges what stays installed, pass 1 everything.
 * lSelector 1 picks read sizes, anything else write sizes. A main-dialog configuration ends the
 * process with status 1. */
int64_t GetSizePass(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig, int64_t lSelector,
                    int iAbsolute, int iPass);

/* The progress total: what will be worked on, each package once. OV_instGetTrueSize first brings
 * the in-use counts up to date. */
int64_t OV_instCountBytesToInstall(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig,
                                   int64_t lSelector, int iAbsolute);
int64_t OV_instGetTrueSize(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig, int64_t lSelector,
                           int iAbsolute);

/* Renders an amount (its absolute value) into at least OV_SIZE_TEXT bytes; nothing for null. */
void diskSpace2String(int64_t lBytes, char *pText);
void OV_instGetFreeSpaceString(const char *pPath, char *pText);
void OV_instGetRequiredSpaceString(const void *pHandle, _OV_InstConfigList *pConfig, char *pText);

/* 1 when the destination has room for pConfig as if it were all chosen; else tells the user and
 * returns 0. */
int OV_instEnoughSpace(const _OV_InstConfigList *pConfig);

#endif
