/* What installing does, thought of without the engine: a product of packages, suites and
 * configurations, a tree in memory, and the rules by which a run changes the tree. */
#ifndef OVINST_TESTS_RUNS_INSTALLMODEL_H
#define OVINST_TESTS_RUNS_INSTALLMODEL_H

#include <map>
#include <set>
#include <string>
#include <vector>

struct ModelNode {
    char cKind; /* 'd', 'f' or 'l' */
    unsigned iMode;
    std::string content; /* a link's target */
};

using ModelTree = std::map<std::string, ModelNode>; /* by path below the root destination */

/* An archive as it lies on the medium, in its order. */
using ModelArchive = std::vector<std::pair<std::string, ModelNode>>;

struct ModelMedium {
    std::map<std::string, std::string> files;
    std::map<std::string, ModelArchive> archives;
};

struct ModelOper {
    enum Kind { COPY, COPYZ, UNTAR, MKDIR, HARDLINK, SOFTLINK } kind;
    std::string keyword; /* as the description has it */
    std::string source;  /* file, archive, directory, or the link's directory */
    std::string target;  /* copy's name (may be empty), or what the link names */
    std::string name;    /* the link's name, or Untar2's root */
    unsigned iMode;
    std::vector<std::string> members; /* as the description lists them */
};

struct ModelSuite {
    std::string name;
    std::vector<int> packages;
};

struct ModelConfig {
    int iId;
    int iSuite; /* -1 for a group */
    int iDefault;
    std::vector<int> members; /* ids */
};

struct ModelProduct {
    std::vector<std::vector<ModelOper>> packages;
    std::vector<ModelSuite> suites;
    std::vector<ModelConfig> configs;

    std::string text() const; /* of the description, header and all */
};

/* What a start finds out, and what a user then chooses. */
struct ModelMarks {
    bool bMaintenance;
    std::set<int> packages;
    std::set<int> suites;
    std::map<int, int> installed; /* by configuration id */
    std::map<int, int> selected;

    std::string text() const;
};

struct InstallModel {
    const ModelMedium *pMedium;
    const ModelProduct *pProduct;
    std::string source; /* the medium's directory, for the history */
    ModelTree tree;
    bool bFailed; /* the last run */

    ModelMarks start(int iConfig, bool bUnattended = false) const;
    bool affectsPackages(const ModelMarks &marks, int iConfig) const;
    void run(const ModelMarks &marks, int iConfig, bool bRemoveAll);
    /* Suites beneath a configuration, in the order of visits. */
    std::vector<const ModelConfig *> offered(int iConfig, std::set<int> inside = {}) const;
};

std::string textOf(const ModelTree &tree);

#endif
