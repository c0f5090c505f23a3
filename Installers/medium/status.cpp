#include <nlohmann/json.hpp>

#include "medium/commands.h"
#include "medium/lastRun.h"
#include "medium/output.h"

static std::vector<std::string> installed(const OV_MediumTree *pTree)
{
    std::vector<std::string> names;

    for (const OV_RunPackage &package : pTree->state.packages)
        if (package.state != OV_RUN_INSTALLING)
            names.push_back(package.name);
    return names;
}

static void printText(const OV_MediumTree *pTree, const OV_LastRun *pRun)
{
    OV_mediumPrint("product %s", pTree->state.product.c_str());
    OV_mediumPrint("version %s", pTree->state.version.c_str());
    OV_mediumPrint("source %s", pTree->state.source.c_str());
    for (const std::string &name : installed(pTree))
        OV_mediumPrint("package %s", name.c_str());
    for (const std::string &name : OV_mediumPending(pTree))
        OV_mediumPrint("pending %s", name.c_str());
    OV_mediumPrint("verdict %s", OV_mediumVerdictWord(pRun->verdict));
    for (const std::string &line : pRun->log)
        OV_mediumPrint("log %s", line.c_str());
}

int OV_mediumStatus(const OV_MediumOptions *pOptions)
{
    OV_MediumTree tree;

    if (!OV_mediumFindTree(pOptions, &tree))
        return OV_MEDIUM_FAILED;
    const OV_LastRun run = OV_mediumLastRun(&tree);
    if (pOptions->format == OV_MEDIUM_JSON)
        OV_mediumPrintJson("status", {
                                         {"product",     tree.state.product               },
                                         {"version",     tree.state.version               },
                                         {"source",      tree.state.source                },
                                         {"destination", tree.dest                        },
                                         {"packages",    installed(&tree)                 },
                                         {"pending",     OV_mediumPending(&tree)          },
                                         {"verdict",     OV_mediumVerdictWord(run.verdict)},
                                         {"log",         run.log                          }
        });
    else
        printText(&tree, &run);
    OV_mediumCloseTree();
    return run.verdict == OV_RUN_COMPLETE ? OV_MEDIUM_CLEAN : OV_MEDIUM_FINDINGS;
}
