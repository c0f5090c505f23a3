/* What installing does, thought of without the engine: a product, a tree in memory, and the rules
 * by which a run changes the tree. Suites go by the ids of their configurations. */
#ifndef OVINST_TESTS_RUNS_INSTALLMODEL_H
#define OVINST_TESTS_RUNS_INSTALLMODEL_H

#include <map>
#include <set>
#include <string>
#include <vector>

/* By path: "d", "f" or "l", the mode, a blank, and what a file holds or a link names. */
using ModelTree = std::map<std::string, std::string>;

struct ModelProduct {
    std::vector<std::vector<std::string>> packages; /* lines, with single quotes */
    std::map<int, std::vector<int>> suites, groups; /* the packages, the members */
    std::set<int> selected;                         /* by the description */

    std::string text() const; /* of the description, without a header */
};

/* What a start finds out, and what a user then chooses. */
struct ModelMarks {
    bool bMaintenance;
    std::set<int> packages, suites, installed, selected;

    std::string text() const;
};

struct InstallModel {
    const ModelTree &medium; /* its one archive holds what is below "arc" */
    ModelProduct product;
    std::string historyHeader, description;
    ModelTree tree; /* below the root destination */
    bool bFailed;   /* the last run */

    ModelMarks start(int iConfig, bool bUnattended) const;
    bool affectsPackages(const ModelMarks &marks, int iConfig) const;
    void run(const ModelMarks &marks, int iConfig, bool bRemoveAll);
};

#endif
