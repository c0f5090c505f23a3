#include <nlohmann/json.hpp>

#include "engine/setupState.h"
#include "medium/commands.h"
#include "medium/comparison.h"
#include "medium/output.h"

static void printJson(const OV_MediumTree *pTree, const OV_Comparison *pComparison)
{
    nlohmann::ordered_json differences = nlohmann::ordered_json::array();

    for (const auto &[path, object] : pComparison->objects)
        for (const char *pWord : OV_mediumDifferenceWords(object.iDifferences))
            differences.push_back({
                {"kind", pWord                   },
                {"path", OV_mediumShownPath(pTree, path)},
                {"package",      object.pPackage->pName                     }
            });
    OV_mediumPrintJson("verify", {
                                     {"product",     pTree->state.product                },
                                     {"version",     pTree->state.version                },
                                     {"destination", pTree->dest                         },
                                     {"medium",      pTree->medium                       },
                                     {"checked",     pComparison->objects.size()         },
                                     {"different",   OV_mediumCountDifferent(pComparison)},
                                     {"differences", differences                         },
                                     {"pending",     pComparison->pending                }
    });
}

int OV_mediumVerify(const OV_MediumOptions *pOptions)
{
    OV_MediumTree tree;
    OV_Comparison comparison;

    if (!OV_mediumOpenTree(pOptions, &tree))
        return OV_MEDIUM_FAILED;
    OV_mediumCompare(&tree, &comparison);
    if (pOptions->format == OV_MEDIUM_JSON)
        printJson(&tree, &comparison);
    else
        OV_mediumPrintComparison(&tree, &comparison);
    OV_mediumCloseTree();
    return OV_mediumComparisonStatus(&comparison);
}
