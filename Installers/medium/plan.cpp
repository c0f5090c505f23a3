#include <nlohmann/json.hpp>

#include "engine/setupState.h"
#include "medium/commands.h"
#include "medium/output.h"
#include "medium/planSteps.h"

static nlohmann::ordered_json stepAsJson(const OV_PlanStep *pStep)
{
    const std::string action = pStep->pAction;

    if (action == "blocked")
        return {
            {"action", action       },
            {"path",   pStep->path  },
            {"reason", pStep->detail}
        };
    if (action == "call")
        return {
            {"action",   action       },
            {"function", pStep->path  },
            {"module",   pStep->detail}
        };
    if (action == "registry")
        return {
            {"action", action     },
            {"name",   pStep->path}
        };
    return {
        {"action", action       },
        {"bytes",  pStep->lBytes},
        {"path",   pStep->path  }
    };
}

static void printJson(const OV_Plan *pPlan)
{
    nlohmann::ordered_json steps = nlohmann::ordered_json::array();
    nlohmann::ordered_json rooms = nlohmann::ordered_json::array();

    for (const OV_PlanStep &each : pPlan->steps)
        steps.push_back(stepAsJson(&each));
    for (const OV_PlanRoom &room : pPlan->rooms)
        rooms.push_back({
            {"path",   room.directory},
            {"needed", room.lNeeded  },
            {"free",   room.lFree    }
        });
    OV_mediumPrintJson("plan", {
                                   {"product",     OV_instGetProductName()         },
                                   {"version",     OV_instGetProductVersion()      },
                                   {"destination", OV_instGetDestinationDirectory()},
                                   {"blocked",     OV_mediumIsBlocked(pPlan)       },
                                   {"steps",       steps                           },
                                   {"filesystems", rooms                           }
    });
}

int OV_mediumPlan(const OV_MediumOptions *pOptions)
{
    OV_RunChoice choice;
    OV_Plan plan;

    if (!OV_mediumChooseRun(pOptions, false, &choice))
        return OV_MEDIUM_FAILED;
    OV_mediumPlanRun(&choice, &plan);
    if (pOptions->format == OV_MEDIUM_JSON)
        printJson(&plan);
    else
        OV_mediumPrintPlan(&plan, false);
    OV_mediumEndRunChoice();
    return OV_mediumIsBlocked(&plan) ? OV_MEDIUM_FINDINGS : OV_MEDIUM_CLEAN;
}
