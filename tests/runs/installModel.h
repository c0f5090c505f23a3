/* What installing does, thought of without the engine: a product, a tree in memory, and the rules
 * by which a run changes the tree. Suites go by the ids of their configurations. */
#ifndef OVINST_TESTS_RUNS_INSTALLMODEL_H
#define OVINST_TESTS_RUNS_INSTALLMODEL_H

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iomanip>
#include <map>
#include <set>
#include <sstream>

using Words = std::vector<std::string>;

/* By path: "d", "f" or "l", the mode, a blank, and what a file holds or a link names. */
using ModelTree = std::map<std::string, std::string>;

struct ModelProduct {
    std::vector<Words> packages;                    /* lines, with single quotes */
    std::map<int, std::vector<int>> suites, groups; /* the packages, the members */
    std::set<int> selected;                         /* by the description */

    std::string text() const; /* of the description, without a header */
};

/* What a start finds out, and what a user then chooses. */
struct ModelMarks {
    bool bMaintenance;
    std::set<int> packages, suites, installed, selected;
    std::map<int, char> pending; /* packages: 'I' were being installed, 'R' removed */

    std::string text() const
    {
        return testing::PrintToString(
            std::make_tuple(bMaintenance, packages, suites, installed, selected));
    }
};

struct InstallModel {
    const ModelTree &medium; /* its one archive holds what is below "arc" */
    ModelProduct product;
    std::string historyHeader, description;
    ModelTree tree;       /* below the root destination */
    bool bFailed;         /* the last run */
    std::set<int> failed; /* its packages, also where that does not count */

    ModelMarks start(int iConfig, bool bUnattended) const;
    void settle(ModelMarks &marks, int iConfig) const;
    bool affectsPackages(const ModelMarks &marks, int iConfig) const;
    void run(const ModelMarks &marks, int iConfig, bool bRemoveAll);
};

static const std::string s_dest = "prod/", s_history = "prod/SetupFiles/.h.his",
                         s_run = "prod/SetupFiles/.h.run";

inline std::string recordOf(int iPackage, const std::string &state = "Installed")
{
    return "Package \"p" + std::to_string(iPackage) + "\" " + state + "\n";
}

inline std::string ModelProduct::text() const
{
    std::ostringstream out;
    auto list = [&](const std::vector<int> &numbers, const char *pBefore) {
        for (int iNumber : numbers)
            out << pBefore << iNumber;
        out << '\n';
    };

    for (size_t i = 0; i < packages.size(); i++) {
        out << "Package 'p" << i << "' ''\n";
        for (const std::string &line : packages[i])
            out << line << '\n';
    }
    for (const auto &[iId, members] : suites)
        list(members, (out << "Suite 'S" << iId << "'", " p"));
    out << "ConfigBegin\n";
    for (const auto &[iId, members] : groups)
        list(members, (out << iId << " CusDlg 't' 't' '' " << selected.count(iId), " "));
    for (const auto &[iId, members] : suites)
        out << iId << " Suite 'S" << iId << "' 'l' '' " << selected.count(iId) << "\n";
    std::string all = out.str() + "ConfigEnd\n";
    std::replace(all.begin(), all.end(), '\'', '"');
    return all;
}

/* ---- the tree ---- */

inline char kindAt(const ModelTree &tree, const std::string &path)
{
    return tree.count(path) ? tree.at(path)[0] : '-';
}

inline std::string below(const std::string &directory, const std::string &name)
{
    return (std::filesystem::path(directory) / name).lexically_normal();
}

inline bool makeDirectories(ModelTree &tree, const std::string &path, const std::string &mode)
{
    for (size_t at = 0; at != std::string::npos;) {
        at = path.find('/', at + 1);
        if (tree.try_emplace(path.substr(0, at), "d" + mode + " ").first->second[0] != 'd')
            return false;
    }
    return true;
}

inline bool put(ModelTree &tree, const std::string &path, const std::string &node)
{
    if (!makeDirectories(tree, path.substr(0, path.rfind('/')), "0755") ||
        (kindAt(tree, path) == 'd' && node[0] != 'd'))
        return false;
    tree[path] = node;
    return true;
}

/* As remove does it: a directory only when it is empty. */
inline void removePath(ModelTree &tree, const std::string &path)
{
    auto next = tree.lower_bound(path + "/");
    bool bFull = next != tree.end() && next->first.compare(0, path.size() + 1, path + "/") == 0;
    if (path != s_dest + "setup" && !bFull)
        tree.erase(path);
}

/* ---- the operations ---- */

inline Words wordsOf(const std::string &line)
{
    std::istringstream in(line);
    Words words;
    for (std::string word; in >> std::quoted(word, '\'');)
        words.push_back(word);
    return words;
}

inline std::string targetOf(const Words &words)
{
    if (words[0] == "SoftLink" || words[0] == "HardLink")
        return below(s_dest + words[1], words[3]);
    return below(s_dest, words[0] == "Copy" && !words[2].empty() ? words[2] : words[1]);
}

inline bool makeLink(ModelTree &tree, const Words &words)
{
    std::string target = below(s_dest + words[1], words[2]), path = targetOf(words);
    if (kindAt(tree, s_dest + words[1]) != 'd' || !put(tree, path, "l0777 " + words[2]))
        return false;
    if (words[0] == "SoftLink")
        return true;
    tree.erase(path); /* whatever becomes of the new one */
    return kindAt(tree, target) == 'f' && put(tree, path, tree[target]);
}

inline bool install(InstallModel &model, const Words &words)
{
    if (words[0] == "Mkdir")
        return makeDirectories(model.tree, targetOf(words), words[2]);
    if (words[0] == "Copy" || words[0] == "CopyZ")
        return model.medium.count(words[1]) &&
               put(model.tree, targetOf(words),
                   "f" + words[4] + model.medium.at(words[1]).substr(5));
    if (words[0] != "Untar")
        return makeLink(model.tree, words);
    for (const auto &[name, node] : model.medium)
        if (name.compare(0, 4, "arc/") == 0)
            (void)put(model.tree, s_dest + name, node); /* nothing is in its way */
    return true;
}

/* Directories are left for later: they go into *pDirectories. */
inline void removeOper(ModelTree &tree, const Words &words, Words *pDirectories)
{
    if (words[0] == "Mkdir")
        pDirectories->push_back(targetOf(words));
    else if (words[0] != "Untar")
        removePath(tree, targetOf(words));
    else
        for (size_t i = words.size() - 2; i > 1; i -= 2)
            removePath(tree, s_dest + words[i]);
}

/* ---- starting ---- */

/* A configuration and everything beneath it, in the order of visits. */
inline std::vector<int> reached(const ModelProduct &product, int iId)
{
    std::vector<int> found = {iId};
    if (product.groups.count(iId))
        for (int iMember : product.groups.at(iId))
            for (int iBeneath : reached(product, iMember))
                found.push_back(iBeneath);
    return found;
}

/* What is pending of a suite by its packages: 'R' where any was being removed, 'I' where some were
 * being installed and the others are there. */
inline char pendingOf(const ModelMarks &marks, const std::vector<int> &packages)
{
    char cFound = '-';
    bool bWhole = true;
    for (int i : packages) {
        char cPending = marks.pending.count(i) ? marks.pending.at(i) : '-';
        if (cPending == 'R')
            return 'R';
        if (cPending == 'I')
            cFound = 'I';
        else
            bWhole &= marks.packages.count(i) > 0;
    }
    return bWhole ? cFound : '-';
}

inline void choosePending(const ModelProduct &product, ModelMarks &marks, int iConfig)
{
    for (int iId : reached(product, iConfig))
        if (product.suites.count(iId)) {
            char cPending = pendingOf(marks, product.suites.at(iId));
            if (cPending == 'I')
                marks.selected.insert(iId);
            else if (cPending == 'R')
                marks.selected.erase(iId);
        }
    for (int iId : reached(product, iConfig)) {
        bool bChosen = false, bCleared = false;
        for (int iBeneath : reached(product, iId))
            if (product.groups.count(iId) && product.suites.count(iBeneath)) {
                bChosen |= marks.selected.count(iBeneath) > 0;
                bCleared |= pendingOf(marks, product.suites.at(iBeneath)) == 'R';
            }
        if (bChosen && !marks.installed.count(iId))
            marks.selected.insert(iId);
        else if (!bChosen && bCleared)
            marks.selected.erase(iId);
    }
}

inline void markPackages(const InstallModel &model, ModelMarks &marks)
{
    const bool bUnfinished = model.tree.count(s_run) > 0;
    const std::string &text = model.tree.at(bUnfinished ? s_run : s_history);
    auto has = [&](int i, const char *pState) {
        return text.find("\n" + recordOf(i, pState)) != std::string::npos;
    };
    for (int i = 0; i < static_cast<int>(model.product.packages.size()); i++) {
        if (has(i, "Installed") || has(i, "Removing"))
            marks.packages.insert(i);
        if (has(i, "Removing") || has(i, "Installing"))
            marks.pending[i] = has(i, "Removing") ? 'R' : 'I';
    }
}

inline ModelMarks InstallModel::start(int iConfig, bool bUnattended) const
{
    ModelMarks marks = {tree.count(s_history) > 0, {}, {}, {}, product.selected, {}};
    for (int iId : reached(product, iConfig))
        if (marks.bMaintenance)
            marks.selected.erase(iId);
        else if (bUnattended)
            marks.selected.insert(iId);
    if (!marks.bMaintenance)
        return marks;
    markPackages(*this, marks);
    for (const auto &[iId, packages] : product.suites)
        if (std::all_of(packages.begin(), packages.end(),
                        [&](int iPackage) { return marks.packages.count(iPackage) > 0; }))
            marks.suites.insert(iId);
    for (int iId : reached(product, iConfig)) /* those with anything installed beneath */
        for (int iBeneath : reached(product, iId))
            if (marks.suites.count(iBeneath)) {
                marks.installed.insert(iId);
                marks.selected.insert(iId);
            }
    if (!marks.pending.empty())
        choosePending(product, marks, iConfig);
    return marks;
}

/* ---- running ---- */

inline std::set<int> packagesInUse(const ModelProduct &product, const ModelMarks &marks,
                                   int iConfig)
{
    std::set<int> inUse;
    for (int iId : reached(product, iConfig))
        if (marks.selected.count(iId) && product.suites.count(iId))
            inUse.insert(product.suites.at(iId).begin(), product.suites.at(iId).end());
    return inUse;
}

/* What is pending and was decided otherwise. */
inline void InstallModel::settle(ModelMarks &marks, int iConfig) const
{
    const std::set<int> inUse = packagesInUse(product, marks, iConfig);
    const ModelMarks before = marks;
    for (int iId : reached(product, iConfig)) {
        if (!product.suites.count(iId))
            continue;
        bool bSelected = marks.selected.count(iId) > 0;
        char cPending = pendingOf(before, product.suites.at(iId));
        if (cPending == 'R' && bSelected) {
            marks.suites.erase(iId);
            marks.installed.erase(iId);
        } else if (cPending == 'I' && !bSelected) {
            marks.suites.insert(iId);
            marks.installed.insert(iId);
        } else {
            continue;
        }
        for (int i : product.suites.at(iId))
            if (before.pending.count(i) && before.pending.at(i) == 'R')
                marks.packages.erase(i);
            else if (before.pending.count(i) && !inUse.count(i))
                marks.packages.insert(i);
    }
}

inline bool InstallModel::affectsPackages(const ModelMarks &marks, int iConfig) const
{
    std::set<int> inUse = packagesInUse(product, marks, iConfig);
    for (int iId : reached(product, iConfig))
        if (product.suites.count(iId) && marks.selected.count(iId) != marks.installed.count(iId))
            for (int iPackage : product.suites.at(iId))
                if (inUse.count(iPackage) != marks.packages.count(iPackage))
                    return true;
    return false;
}

/* What a run does with a suite: the part that removes, or the part that installs. */
inline void runSuite(InstallModel &model, const std::vector<int> &packages, std::set<int> *pSpared,
                     bool bRemoving)
{
    Words directories;
    model.bFailed |= packages.empty();
    for (int iPackage : packages) {
        if (!pSpared->insert(iPackage).second)
            continue;
        for (const std::string &line : model.product.packages[static_cast<size_t>(iPackage)])
            if (bRemoving)
                removeOper(model.tree, wordsOf(line), &directories);
            else if (!install(model, wordsOf(line))) {
                model.failed.insert(iPackage);
                model.bFailed |= wordsOf(line)[0] != "CopyZ";
            }
    }
    for (; !directories.empty(); directories.pop_back())
        if (kindAt(model.tree, directories.back()) == 'd')
            removePath(model.tree, directories.back());
}

/* By the packages that a run installs: what is on disk behind one of which a step failed. */
inline std::string runFile(const InstallModel &model, const ModelMarks &marks, int iConfig)
{
    const std::set<int> inUse = packagesInUse(model.product, marks, iConfig);
    std::set<int> handled[2]; /* installed, removed */
    for (int iId : reached(model.product, iConfig)) {
        bool bSelected = marks.selected.count(iId) > 0;
        if (model.product.suites.count(iId) && bSelected != (marks.suites.count(iId) > 0))
            for (int i : model.product.suites.at(iId))
                if (bSelected ? !marks.packages.count(i) : !inUse.count(i))
                    handled[!bSelected].insert(i);
    }
    std::string text =
        "f0644 RunFileVersion 1" + model.historyHeader.substr(model.historyHeader.find('\n'));
    for (int i = 0; i < static_cast<int>(model.product.packages.size()); i++)
        if (handled[0].count(i))
            text += recordOf(i, model.failed.count(i) ? "Installing" : "Installed");
        else if (!handled[1].count(i) && marks.packages.count(i))
            text += recordOf(i);
    return text;
}

inline void InstallModel::run(const ModelMarks &marks, int iConfig, bool bRemoveAll)
{
    bFailed = false;
    failed.clear();
    (void)put(tree, s_dest + "Setup/setup.log", "f0644 ");
    if (!bRemoveAll)
        (void)put(tree, s_history, "f0644 " + historyHeader);
    for (bool bRemoving : {true, false}) {
        std::set<int> spared = bRemoving ? packagesInUse(product, marks, iConfig) : marks.packages;
        for (int iId : reached(product, iConfig)) {
            bool bSelected = marks.selected.count(iId) > 0;
            if (!product.suites.count(iId))
                continue;
            if ((marks.suites.count(iId) > 0) == bRemoving && bSelected != bRemoving)
                runSuite(*this, product.suites.at(iId), &spared, bRemoving);
            if (bSelected) /* in both parts: the driver records in each */
                for (int iPackage : product.suites.at(iId))
                    tree[s_history] += recordOf(iPackage);
        }
    }
    tree[s_dest + "cdinst.dat"] = "f0644 " + description;
    tree.erase(s_run);
    if (!failed.empty() && !bRemoveAll)
        tree[s_run] = runFile(*this, marks, iConfig);
    for (const std::string &path : {s_dest + "cdinst.dat", s_history})
        if (bRemoveAll)
            tree.erase(path);
}

#endif
