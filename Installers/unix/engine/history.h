/* The history file: what was installed, from where, and which packages are on disk. Its presence
 * makes the next run one of maintenance. Lines: version of the format, product name, product
 * version, source directory, then one per package. */
#ifndef OVINST_ENGINE_HISTORY_H
#define OVINST_ENGINE_HISTORY_H

#include <cstddef>

#include "description/model.h"
#include "engine/runFile.h"

/* A line of the history that has so many bytes, its end included, is not read as one. */
enum { OV_HISTORY_LINE = 256 };

/* The bytes of the line for a product's name or version, and of that for a package. */
size_t OV_instHistoryTextSize(const char *pText);
size_t OV_instHistoryPackageSize(const char *pName);

/* Writes the four header lines, replacing an earlier file; a file that cannot be opened is told on
 * standard output. */
void OV_InitHistoryFile(const char *pDest, const char *pProductName, const char *pProductVersion);

/* Appends one line for every package of the suite. */
void OV_UpdateHistoryFile(const char *pDest, const _OV_InstSuiteList *pSuite);

void OV_RemoveHistoryFile(const char *pDest);

/* Reads the history in pDest: its header, and each package once, in the file's order, all of them
 * installed. False when there is none that can be believed, or none of this format. */
bool OV_instReadHistory(const char *pDest, OV_RunFile *pHistory);

/* Writes the history anew without a run: the packages of pState that are installed, those that
 * were being removed included, each once. As a whole, and on the disk when this returns. 0 or -1.
 */
int OV_instWriteHistory(const char *pDest, const OV_RunFile *pState);

/* The check at start-up. 1 for an earlier installation (in pDest, or in a tree of the product that
 * the medium or the program lies in, which then becomes the root destination): its source
 * directory is taken over and what it holds is marked installed, from pConfig down. Else 0. */
int OV_UpdateSuiteHistory(_OV_instCDinst *pRoot, _OV_InstConfigList *pConfig,
                          _OV_InstSuiteList *pSuites, const char *pDest, const char *pProductName,
                          const char *pProductVersion);

/* The check of the description in use for its own destination: true for an earlier installation,
 * which is then marked from the configuration of that id down. */
bool OV_instFindInstallation(int iConfig);

/* Whether the last check could not read what may well be there, for want of memory or because the
 * disk fails: what is installed is then not known, and no run may begin. */
bool OV_instIsHistoryUnreadable();

/* Warns when the leading numbers of the versions differ. Always 1: a difference never stops the
 * check. */
int CompareProductVersions(const char *pProductName, const char *pProductVersion,
                           const char *pRecorded);

#endif
