#include "description/modelIndex.h"

#include <new>
#include <string_view>
#include <unordered_map>
#include <vector>

/* One list's nodes by their key, those of the same key in file order. A list may be appended to by
 * hand, so the map follows it: pSeen is the last node that it holds. */
template <typename Key, typename Node> struct ListMap {
    std::unordered_map<Key, std::vector<Node *>> nodes;
    Node *pSeen;
};

/* The names are the records' own. */
struct _OV_InstIndex {
    ListMap<int, _OV_InstConfigList> configs;
    ListMap<std::string_view, _OV_InstSuiteList> suites;
    ListMap<std::string_view, _OV_InstPackageNode> packages;
};

/* What a node is found by; false while it has no name. */
static bool getKey(const _OV_InstConfigList *pConfig, int *piKey)
{
    *piKey = pConfig->iId;
    return true;
}

static bool getName(const char *pName, std::string_view *pKey)
{
    if (pName)
        *pKey = pName;
    return pName != nullptr;
}

static bool getKey(const _OV_InstSuiteList *pSuite, std::string_view *pKey)
{
    return getName(pSuite->pName, pKey);
}

static bool getKey(const _OV_InstPackageNode *pNode, std::string_view *pKey)
{
    return getName(pNode->pPackage->pName, pKey);
}

template <typename Key, typename Node> static void follow(ListMap<Key, Node> *pMap, Node *pHead)
{
    Node *pNode = pMap->pSeen ? pMap->pSeen->pNext : pHead;
    Key key = {};

    for (; pNode && getKey(pNode, &key); pNode = pNode->pNext) {
        pMap->nodes[key].push_back(pNode);
        pMap->pSeen = pNode;
    }
}

/* All nodes of a key, or null; null also without memory. */
template <typename Key, typename Node>
static const std::vector<Node *> *findAll(_OV_instCDinst *pRoot,
                                          ListMap<Key, Node> _OV_InstIndex::*pMap, Key key)
{
    if (updateIndex(pRoot) < 0)
        return nullptr;
    const auto &nodes = (pRoot->pIndex->*pMap).nodes;
    auto found = nodes.find(key);
    return found != nodes.end() ? &found->second : nullptr;
}

template <typename Key, typename Node>
static Node *findFirst(_OV_instCDinst *pRoot, ListMap<Key, Node> _OV_InstIndex::*pMap, Key key)
{
    const std::vector<Node *> *pNodes = findAll(pRoot, pMap, key);
    return pNodes ? pNodes->front() : nullptr;
}

int updateIndex(_OV_instCDinst *pRoot)
{
    try {
        if (!pRoot->pIndex)
            pRoot->pIndex = new _OV_InstIndex();
        follow(&pRoot->pIndex->configs, pRoot->pConfigHead);
        follow(&pRoot->pIndex->suites, pRoot->pSuiteHead);
        follow(&pRoot->pIndex->packages, pRoot->pPackageHead);
    } catch (const std::bad_alloc &) {
        return -1;
    }
    return 0;
}

void freeIndex(_OV_InstIndex *pIndex)
{
    delete pIndex;
}

_OV_InstConfigList *OV_instGetConfigFromId(_OV_instCDinst *pRoot, int iId)
{
    return pRoot ? findFirst(pRoot, &_OV_InstIndex::configs, iId) : nullptr;
}

_OV_InstSuiteList *OV_instGetSuiteFromName(_OV_instCDinst *pRoot, const char *pName)
{
    if (!pRoot || !pName)
        return nullptr;
    return findFirst(pRoot, &_OV_InstIndex::suites, std::string_view(pName));
}

_OV_InstPackage *OV_instGetPackageFromName(_OV_instCDinst *pRoot, const char *pName)
{
    if (!pRoot || !pName)
        return nullptr;
    _OV_InstPackageNode *pNode =
        findFirst(pRoot, &_OV_InstIndex::packages, std::string_view(pName));
    return pNode ? pNode->pPackage : nullptr;
}

static void markPackages(_OV_instCDinst *pRoot, const char *pName, int32_t _OV_InstPackage::*pMark,
                         int32_t iValue)
{
    if (!pRoot || !pName)
        return;
    const auto *pNodes = findAll(pRoot, &_OV_InstIndex::packages, std::string_view(pName));
    for (size_t i = 0; pNodes && i < pNodes->size(); i++)
        (*pNodes)[i]->pPackage->*pMark = iValue;
}

void OV_instMarkPackageInstalled(_OV_instCDinst *pRoot, const char *pName)
{
    markPackages(pRoot, pName, &_OV_InstPackage::iInstalled, 1);
}

void OV_instMarkPackagePending(_OV_instCDinst *pRoot, const char *pName, OV_Pending pending)
{
    markPackages(pRoot, pName, &_OV_InstPackage::iPending, pending);
}
