#include "runs/installModel.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <sstream>

static const std::string s_dest = "the.product";
static const std::string s_history = s_dest + "/SetupFiles/.h.his";
static const std::string s_log = s_dest + "/Setup/setup.log";

/* ---- texts ---- */

static std::string quoted(const std::string &text)
{
    return " \"" + text + "\"";
}

static std::string octal(unsigned iMode)
{
    std::ostringstream out;

    out << " 0" << std::oct << iMode;
    return out.str();
}

static std::string lineOf(const ModelOper &oper)
{
    std::string line = oper.keyword;

    switch (oper.kind) {
    case ModelOper::COPY:
    case ModelOper::COPYZ:
        return line + quoted(oper.source) + quoted(oper.target) + " 10" + octal(oper.iMode) + "\n";
    case ModelOper::MKDIR:
        return line + quoted(oper.source) + octal(oper.iMode) + "\n";
    case ModelOper::HARDLINK:
    case ModelOper::SOFTLINK:
        return line + quoted(oper.source) + quoted(oper.target) + quoted(oper.name) + "\n";
    case ModelOper::UNTAR:
        line += (oper.name.empty() ? "" : quoted(oper.name)) + quoted(oper.source) + " 1";
        for (const std::string &member : oper.members)
            line += quoted(member) + " 1";
    }
    return line + "\n";
}

static std::string packageName(int iPackage)
{
    return "p" + std::to_string(iPackage);
}

std::string ModelProduct::text() const
{
    std::ostringstream out;

    out << "SetupVersion 1\nProductName The Product\nProductVersion 3.5\nProductDirectory "
        << s_dest << "\nLogFile setup.log\nHistoryFile h\nNoChestRC 1\n";
    for (size_t i = 0; i < packages.size(); i++) {
        out << "Package" << quoted(packageName(static_cast<int>(i))) << " \"\"\n";
        for (const ModelOper &oper : packages[i])
            out << lineOf(oper);
    }
    for (const ModelSuite &suite : suites) {
        out << "Suite" << quoted(suite.name);
        for (int iPackage : suite.packages)
            out << ' ' << packageName(iPackage);
        out << '\n';
    }
    out << "ConfigBegin\n";
    for (const ModelConfig &config : configs) {
        out << config.iId << (config.iSuite < 0 ? " CusDlg \"t\" \"t\" \"\" " : " Suite ");
        if (config.iSuite >= 0)
            out << quoted(suites[static_cast<size_t>(config.iSuite)].name) << " \"l\" \"\" ";
        out << config.iDefault;
        for (int iMember : config.members)
            out << ' ' << iMember;
        out << '\n';
    }
    out << "ConfigEnd\n";
    return out.str();
}

std::string ModelMarks::text() const
{
    std::ostringstream out;

    out << (bMaintenance ? "maintenance" : "new") << ", packages";
    for (int iPackage : packages)
        out << ' ' << packageName(iPackage);
    out << ", suites";
    for (int iSuite : suites)
        out << ' ' << iSuite;
    out << ", configurations";
    for (auto [iId, iInstalled] : installed)
        out << ' ' << iId << ':' << iInstalled << selected.at(iId);
    return out.str();
}

std::string textOf(const ModelTree &tree)
{
    std::ostringstream out;

    for (const auto &[path, node] : tree) {
        out << node.cKind << octal(node.iMode) << ' ' << path;
        if (path == s_log) /* it holds times */
            out << " [...]";
        else if (node.content.size() > 60 && path != s_history)
            out << " of " << node.content.size() << ", " << std::hash<std::string>()(node.content);
        else
            out << " [" << node.content << "]";
        out << '\n';
    }
    return out.str();
}

/* ---- the tree ---- */

static bool isKind(const ModelTree &tree, const std::string &path, char cKind)
{
    auto found = tree.find(path);

    return path.empty() ? cKind == 'd' : found != tree.end() && found->second.cKind == cKind;
}

static bool isEmpty(const ModelTree &tree, const std::string &directory)
{
    auto next = tree.lower_bound(directory + "/");

    return next == tree.end() || next->first.compare(0, directory.size() + 1, directory + "/") != 0;
}

static bool makeDirectories(ModelTree &tree, const std::string &path, unsigned iMode)
{
    for (size_t at = 0; at != std::string::npos;) {
        at = path.find('/', at + 1);
        std::string prefix = path.substr(0, at);
        if (!tree.count(prefix))
            tree[prefix] = {'d', iMode, ""};
        else if (!isKind(tree, prefix, 'd'))
            return false;
    }
    return true;
}

static std::string parentOf(const std::string &path)
{
    size_t slash = path.rfind('/');

    return slash == std::string::npos ? "" : path.substr(0, slash);
}

static bool makeParents(ModelTree &tree, const std::string &path)
{
    return parentOf(path).empty() || makeDirectories(tree, parentOf(path), 0755);
}

/* As remove does it: a directory only when it is empty. */
static void removePath(ModelTree &tree, const std::string &path)
{
    if (path != s_dest + "/setup" && (!isKind(tree, path, 'd') || isEmpty(tree, path)))
        tree.erase(path);
}

static bool putFile(ModelTree &tree, const std::string &path, const ModelNode &node)
{
    if (!makeParents(tree, path) || isKind(tree, path, 'd'))
        return false;
    tree[path] = node;
    return true;
}

/* ---- the operations ---- */

static std::string below(const std::string &directory, const std::string &name)
{
    return (std::filesystem::path(directory) / name).lexically_normal();
}

static std::string targetOf(const ModelOper &oper)
{
    bool bNamed = oper.kind == ModelOper::COPY && !oper.target.empty();

    return below(s_dest, bNamed ? oper.target : oper.source);
}

static std::string baseOf(const ModelOper &oper)
{
    return oper.name.empty() ? s_dest : oper.name == "<RootDest>" ? "" : "Orvane";
}

static bool unpack(ModelTree &tree, const ModelMedium &medium, const ModelOper &oper)
{
    std::string base = baseOf(oper);
    auto archive = medium.archives.find(oper.source);

    if (archive == medium.archives.end() || !isKind(tree, base, 'd'))
        return false;
    for (const auto &[name, node] : archive->second) {
        (void)makeParents(tree, below(base, name)); /* archives are in nobody's way */
        tree[below(base, name)] = node;
    }
    return true;
}

static bool makeLink(ModelTree &tree, const ModelOper &oper)
{
    std::string directory = below(s_dest, oper.source);
    std::string path = below(directory, oper.name);
    std::string target = below(directory, oper.target);

    if (!isKind(tree, directory, 'd') || !makeParents(tree, path))
        return false;
    if (!isKind(tree, path, 'd'))
        tree.erase(path);
    if (oper.kind == ModelOper::HARDLINK && !isKind(tree, target, 'f'))
        return false;
    tree[path] = oper.kind == ModelOper::SOFTLINK ? ModelNode{'l', 0777, oper.target}
                                                  : ModelNode(tree[target]);
    return true;
}

static bool install(ModelTree &tree, const ModelMedium &medium, const ModelOper &oper)
{
    auto file = medium.files.find(oper.source);

    switch (oper.kind) {
    case ModelOper::COPY:
    case ModelOper::COPYZ:
        return (file != medium.files.end() &&
                putFile(tree, targetOf(oper), {'f', oper.iMode, file->second})) ||
               oper.kind == ModelOper::COPYZ;
    case ModelOper::UNTAR:
        return unpack(tree, medium, oper);
    case ModelOper::MKDIR:
        return makeDirectories(tree, below(s_dest, oper.source), oper.iMode);
    default:
        return makeLink(tree, oper);
    }
}

/* Directories are left for later: they go into *pDirectories. */
static void removeOper(ModelTree &tree, const ModelOper &oper,
                       std::vector<std::string> *pDirectories)
{
    if (oper.kind == ModelOper::COPY || oper.kind == ModelOper::COPYZ)
        removePath(tree, targetOf(oper));
    else if (oper.kind == ModelOper::MKDIR)
        pDirectories->push_back(below(s_dest, oper.source));
    else if (oper.kind != ModelOper::UNTAR)
        removePath(tree, below(below(s_dest, oper.source), oper.name));
    else
        for (auto member = oper.members.rbegin(); member != oper.members.rend(); ++member)
            removePath(tree, below(baseOf(oper), *member));
}

/* ---- starting ---- */

static const ModelConfig *configOf(const ModelProduct &product, int iId)
{
    for (const ModelConfig &config : product.configs)
        if (config.iId == iId)
            return &config;
    return nullptr;
}

std::vector<const ModelConfig *> InstallModel::offered(int iConfig, std::set<int> inside) const
{
    const ModelConfig *pConfig = configOf(*pProduct, iConfig);
    std::vector<const ModelConfig *> found;

    if (!pConfig || !inside.insert(iConfig).second)
        return found;
    if (pConfig->iSuite >= 0)
        return {pConfig};
    for (int iMember : pConfig->members) {
        auto beneath = offered(iMember, inside);
        found.insert(found.end(), beneath.begin(), beneath.end());
    }
    return found;
}

/* Calls back for every configuration that is reached. */
static void visit(const ModelProduct &product, int iId, std::set<int> inside,
                  const std::function<void(int)> &call)
{
    const ModelConfig *pConfig = configOf(product, iId);

    if (!pConfig || !inside.insert(iId).second)
        return;
    call(iId);
    for (int iMember : pConfig->members)
        visit(product, iMember, inside, call);
}

/* Whether anything beneath is installed. */
static bool markInstalled(const ModelProduct &product, int iId, std::set<int> inside,
                          ModelMarks *pMarks)
{
    const ModelConfig *pConfig = configOf(product, iId);

    if (!pConfig || !inside.insert(iId).second)
        return false;
    bool bFound = pMarks->suites.count(pConfig->iSuite) > 0;
    for (int iMember : pConfig->members)
        bFound |= markInstalled(product, iMember, inside, pMarks);
    if (bFound)
        pMarks->installed[iId] = pMarks->selected[iId] = 1;
    return bFound;
}

ModelMarks InstallModel::start(int iConfig, bool bUnattended) const
{
    auto history = tree.find(s_history);
    ModelMarks marks = {history != tree.end(), {}, {}, {}, {}};

    for (const ModelConfig &config : pProduct->configs) {
        marks.installed[config.iId] = 0;
        marks.selected[config.iId] = config.iDefault;
    }
    if (bUnattended)
        visit(*pProduct, iConfig, {}, [&](int iId) { marks.selected[iId] = 1; });
    if (!marks.bMaintenance)
        return marks;
    visit(*pProduct, iConfig, {}, [&](int iId) { marks.selected[iId] = 0; });
    for (size_t i = 0; i < pProduct->packages.size(); i++)
        if (history->second.content.find("\nPackage \"" + packageName(static_cast<int>(i)) +
                                         "\" Installed\n") != std::string::npos)
            marks.packages.insert(static_cast<int>(i));
    for (size_t i = 0; i < pProduct->suites.size(); i++) {
        const std::vector<int> &needed = pProduct->suites[i].packages;
        if (std::all_of(needed.begin(), needed.end(),
                        [&](int iPackage) { return marks.packages.count(iPackage) > 0; }))
            marks.suites.insert(static_cast<int>(i));
    }
    (void)markInstalled(*pProduct, iConfig, {}, &marks);
    return marks;
}

/* ---- running ---- */

static std::set<int> packagesInUse(const InstallModel &model, const ModelMarks &marks, int iConfig)
{
    std::set<int> inUse;

    for (const ModelConfig *pConfig : model.offered(iConfig))
        if (marks.selected.at(pConfig->iId)) {
            const auto &suite = model.pProduct->suites[static_cast<size_t>(pConfig->iSuite)];
            inUse.insert(suite.packages.begin(), suite.packages.end());
        }
    return inUse;
}

bool InstallModel::affectsPackages(const ModelMarks &marks, int iConfig) const
{
    std::set<int> inUse = packagesInUse(*this, marks, iConfig);

    for (const ModelConfig *pConfig : offered(iConfig))
        if (marks.selected.at(pConfig->iId) != marks.installed.at(pConfig->iId))
            for (int iPackage : pProduct->suites[static_cast<size_t>(pConfig->iSuite)].packages)
                if (inUse.count(iPackage) != marks.packages.count(iPackage))
                    return true;
    return false;
}

static void record(ModelTree &tree, const ModelSuite &suite)
{
    for (int iPackage : suite.packages)
        tree[s_history].content += "Package \"" + packageName(iPackage) + "\" Installed\n";
}

/* The part of a run that removes, or the part that installs. */
static void runPart(InstallModel &model, const ModelMarks &marks, int iConfig, bool bRemoving)
{
    std::set<int> inUse = packagesInUse(model, marks, iConfig);
    std::set<int> worked;

    for (const ModelConfig *pConfig : model.offered(iConfig)) {
        const ModelSuite &suite = model.pProduct->suites[static_cast<size_t>(pConfig->iSuite)];
        bool bSelected = marks.selected.at(pConfig->iId) != 0;
        bool bInstalled = marks.suites.count(pConfig->iSuite) > 0;
        std::vector<std::string> directories;

        if (bInstalled == bRemoving && bSelected != bRemoving) {
            model.bFailed |= suite.packages.empty();
            for (int iPackage : suite.packages) {
                if (bRemoving ? inUse.count(iPackage) : marks.packages.count(iPackage))
                    continue;
                if (!worked.insert(iPackage).second)
                    continue;
                for (const ModelOper &oper :
                     model.pProduct->packages[static_cast<size_t>(iPackage)])
                    if (bRemoving)
                        removeOper(model.tree, oper, &directories);
                    else
                        model.bFailed |= !install(model.tree, *model.pMedium, oper);
            }
        }
        while (!directories.empty()) {
            if (isKind(model.tree, directories.back(), 'd'))
                removePath(model.tree, directories.back());
            directories.pop_back();
        }
        if (bSelected)
            record(model.tree, suite);
    }
}

void InstallModel::run(const ModelMarks &marks, int iConfig, bool bRemoveAll)
{
    bFailed = false;
    (void)putFile(tree, s_log, {'f', 0644, ""});
    if (!bRemoveAll)
        (void)putFile(tree, s_history,
                      {'f', 0644, "HistoryFileVersion 2\nThe Product\n3.5\n" + source + "\n"});
    runPart(*this, marks, iConfig, true);
    runPart(*this, marks, iConfig, false);
    if (bRemoveAll) {
        removePath(tree, s_dest + "/cdinst.dat");
        tree.erase(s_history);
    } else {
        (void)putFile(tree, s_dest + "/cdinst.dat", {'f', 0644, pProduct->text()});
    }
}
