/* The setup model: a medium's description in memory. One root record owns everything; every
 * string is an allocated copy owned by its record; lists are singly linked, appended at the tail
 * and keep file order. The reader builds it, the engine updates the run-time fields named here. */
#ifndef OVINST_DESCRIPTION_MODEL_H
#define OVINST_DESCRIPTION_MODEL_H

#include <cstdint>

/* Operation kinds: positions in OVInstOperTkList. */
enum OV_InstOperType {
    OV_OPER_SUITE,
    OV_OPER_PACKAGE,
    OV_OPER_COPY,
    OV_OPER_COPYZ,
    OV_OPER_UNTAR,
    OV_OPER_UNTARZ,
    OV_OPER_UNTAR2,
    OV_OPER_UNTARZ2,
    OV_OPER_MKDIR,
    OV_OPER_HARDLINK,
    OV_OPER_SOFTLINK,
    OV_OPER_PREFIX,
    OV_OPER_ENV,
    OV_OPER_ALIAS,
    OV_OPER_CONFIGBEGIN,
    OV_OPER_CONFIGEND,
    OV_OPER_FUNCTION,
    OV_OPER_SHORTCUT,
    OV_OPER_REGDATA,
    OV_OPER_SELFREG,
    OV_OPER_COUNT
};

/* Configuration kinds: positions in OVInstConfigTkList. */
enum OV_InstConfigType {
    OV_CONFIG_MAINDLG = 0,
    OV_CONFIG_CUSDLG = 1,
    OV_CONFIG_SUITE = 2,
    OV_CONFIG_COUNT
};

/* The configurations that setup begins with, by their ids. */
enum OV_InstEntryConfig {
    OV_FIRST_CONFIG = 1,       /* the first page of a new installation */
    OV_MAINTENANCE_CONFIG = 2, /* what is offered where the product is installed */
    OV_UNATTENDED_CONFIG = 3   /* what a run without dialogs installs */
};

enum { OV_MAINDLG_CHILDREN = 4, OV_CUSDLG_CHILDREN = 256 };

/* Both end with a null entry. */
extern const char *const OVInstOperTkList[];
extern const char *const OVInstConfigTkList[];

struct _OV_InstCopy {
    char *pSource;
    char *pDest; /* null: the same relative path as the source */
    int32_t iMode;
    int32_t iValue3;
    int32_t iValue4;
};

/* An archive and its members; the two arrays are parallel and grow by 100 slots, unused ones
 * clear. */
struct _OV_InstTar {
    char *pArchive;
    int32_t iCount;
    int64_t *aUnits;
    char **apMembers;
    char *pDestRoot; /* Untar2 and UntarZ2 only */
};

struct _OV_InstMkdir {
    char *pPath;
    int32_t iMode;
    int32_t iValue2;
    int32_t iValue3;
};

struct _OV_InstLink {
    char *pLink;
    char *pTarget;
    char *pThird;
    int32_t iHard;
};

struct _OV_InstFunction {
    char *pFunction;
    char *pModule;
    char *pData;
    void *hModule;  /* null until loaded; closed when the record is freed */
    void *pAddress; /* the function, once found in hModule */
};

struct _OV_InstShortcut {
    char *pShort1;
    char *pShort2;
    char *pShort3;
    char *pShort4; /* may be null */
};

struct _OV_InstRegData {
    char *pRootKey;
    char *pKeyName;
    char *pKeyValue;
    char *pValue; /* "%d" in it stands for the destination directory */
};

struct _OV_InstSelfReg {
    char *pModule;
};

struct _OV_InstOper {
    int32_t iType;
    union {
        _OV_InstCopy copy;
        _OV_InstTar tar;
        _OV_InstMkdir mkdir;
        _OV_InstLink link;
        _OV_InstFunction function;
        _OV_InstShortcut shortcut;
        _OV_InstRegData regData;
        _OV_InstSelfReg selfReg;
    } body;
    int64_t lUnits; /* bytes, and the weight in progress counting */
    _OV_InstOper *pNext;
};

/* What a run that did not end well has left to be done. */
enum OV_Pending { OV_PENDING_NONE, OV_PENDING_INSTALL, OV_PENDING_REMOVAL };

struct _OV_InstPackage {
    char *pName;
    char *pLabel;
    uint64_t lSize;     /* bytes to read from the medium */
    uint64_t lSize2;    /* bytes to write, rounded to the destination's blocks */
    int32_t iPassDone;  /* last installation pass run */
    int32_t iCounted;   /* visits while sizes are summed */
    int32_t iInstalled; /* 1: on disk, by the history */
    int32_t iInUse;     /* how many selected suites need it */
    _OV_InstOper *pOperHead;
    _OV_InstOper *pOperTail;
    int32_t iPending; /* OV_Pending */
};

/* A node of the package list or of a suite; the latter only refers to its package. */
struct _OV_InstPackageNode {
    _OV_InstPackage *pPackage;
    _OV_InstPackageNode *pNext;
};

struct _OV_InstSuiteList {
    char *pName;
    int32_t iState; /* 1: installed, by the history */
    _OV_InstPackageNode *pPackHead;
    _OV_InstPackageNode *pPackTail;
    uint64_t lReadSize; /* totals of the size calculation; the first suite's only */
    uint64_t lWriteSize;
    _OV_InstSuiteList *pNext;
    int32_t iHidden;
    int32_t iVital;
};

struct _OV_InstIcon {
    char *pIcon1; /* file */
    char *pIcon2; /* symbol */
};

/* Type-specific records. In both dialogs' a 0 follows the last child when there is room. */
struct _OV_InstMainDlg {
    char *pTitle;
    char *pText;
    int32_t aChildren[OV_MAINDLG_CHILDREN];
};

struct _OV_InstCusDlg {
    int32_t iReserved; /* unused: it makes the next one the second 32-bit field, which is fixed */
    int32_t iMoveBlocked; /* installation starts only while this is 0; the reader leaves it so */
    char *pTitle;
    char *pText;
    int32_t aChildren[OV_CUSDLG_CHILDREN];
};

struct _OV_InstSuiteChoice {
    char *pText;
    _OV_InstSuiteList *pSuite;
};

struct _OV_InstConfigList {
    int32_t iId;
    int32_t iType;
    int32_t iInstalled; /* state found at start */
    int32_t iSelected;  /* state wanted */
    _OV_InstIcon *pIcon;
    void *pData; /* one of the three records above, by iType */
    _OV_InstConfigList *pNext;
    _OV_InstConfigList *pParent;
    int32_t iPending; /* OV_Pending */
};

struct _OV_InstIndex; /* by name and id, beside the lists; see modelIndex.h */

struct _OV_instCDinst {
    uint8_t bChestRC;
    uint8_t bUserOrgRes;
    uint8_t bDisplayLog;
    char *pSourceDir;  /* with its trailing slash */
    char *pInstallDir; /* root destination, or null */
    char *pProductName;
    char *pProductVersion;
    char *pProductDirectory;
    char *pCdinstPath;
    char *pLogFile;     /* below the destination; empty for none */
    char *pHistoryFile; /* null: the product name is used */
    _OV_InstSuiteList *pSuiteHead;
    _OV_InstSuiteList *pSuiteTail;
    _OV_InstPackageNode *pPackageHead;
    _OV_InstPackageNode *pPackageTail;
    _OV_InstConfigList *pConfigHead;
    _OV_InstConfigList *pConfigTail;  /* newConfig's own: how far it has walked, and the group */
    _OV_InstConfigList *pConfigGroup; /* that governs what comes next */
    _OV_InstIndex *pIndex;            /* made on first use */
};

/* Position in the keyword table, or -1 for a null, empty or unknown word. Exact comparison. */
int getOperType(const char *pWord);
int getConfigType(const char *pWord);

/* First match in list order, or null (also for a null argument). Appending to the lists between
 * look-ups is seen, by hand too, but a record without a name hides those behind it until it has
 * one; removing from the lists is not supported. */
_OV_InstConfigList *OV_instGetConfigFromId(_OV_instCDinst *pRoot, int iId);
_OV_InstSuiteList *OV_instGetSuiteFromName(_OV_instCDinst *pRoot, const char *pName);
_OV_InstPackage *OV_instGetPackageFromName(_OV_instCDinst *pRoot, const char *pName);

/* Marks every package of that name installed, or with what is pending of it (names need not be
 * unique). */
void OV_instMarkPackageInstalled(_OV_instCDinst *pRoot, const char *pName);
void OV_instMarkPackagePending(_OV_instCDinst *pRoot, const char *pName, OV_Pending pending);

/* Member ids of a dialog's configuration and, in *piMost, how many slots there are; null and 0
 * for a suite or without data. The list ends early at the first id below 1. */
const int32_t *OV_instGetConfigChildren(const _OV_InstConfigList *pConfig, int *piMost);

/* How many members of a list the description does not have. Walks pass over them, so whoever has to
 * tell of them counts. */
int OV_instCountMissingMembers(_OV_instCDinst *pRoot, const _OV_InstConfigList *pConfig);

/* A new, empty root with the header flags at their defaults; null without memory. */
_OV_instCDinst *newCDinst();

/* New records, zeroed and linked at the tail of their list; null without memory, for their index
 * too. newOper also gives null before the first package, newConfig sets the parent by the order of
 * the list. */
_OV_InstSuiteList *newSuite(_OV_instCDinst *pRoot);
_OV_InstPackage *newPackage(_OV_instCDinst *pRoot);
_OV_InstOper *newOper(_OV_instCDinst *pRoot);
_OV_InstConfigList *newConfig(_OV_instCDinst *pRoot, int iId, int iType);

/* The parts of a configuration that has none of them yet, zeroed and freed with it: the record of
 * its kind, and its icon. Null without memory. */
void *newConfigData(_OV_InstConfigList *pConfig);
_OV_InstIcon *newIcon(_OV_InstConfigList *pConfig);

/* Appends a reference to pPackage. A null suite is told on standard error, a null package
 * ignored. */
void OV_instAddPackage2Suite(_OV_InstSuiteList *pSuite, _OV_InstPackage *pPackage);

/* Free a record and all it owns; null is accepted. A suite never frees its packages, a
 * configuration never its suite. */
void OV_instFreeOper(_OV_InstOper *pOper);
void OV_instFreePackage(_OV_InstPackage *pPackage);
void OV_instFreeSuite(_OV_InstSuiteList *pSuite);
void OV_instFreeConfig(_OV_InstConfigList *pConfig);
void OV_instFreeCDinst(_OV_instCDinst *pRoot);

#endif
