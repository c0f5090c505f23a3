#include "medium/findings.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include <nlohmann/json.hpp>

#include "medium/output.h"

using Json = nlohmann::ordered_json;

const OV_FindingKind OV_mediumFindingKinds[] = {
    {"header-key",                OV_ERROR,   "A line of the header is missing or out of order"      },
    {"header-value-long",         OV_ERROR,   "A value of the header is too long"                    },
    {"byte-order-mark",           OV_ERROR,   "The file begins with a byte order mark"               },
    {"unknown-keyword",           OV_ERROR,   "A line begins with no keyword, or a reserved one"     },
    {"outside-package",           OV_ERROR,   "An operation stands before the first package"         },
    {"unterminated-text",         OV_ERROR,   "A text has no closing quote"                          },
    {"missing-field",             OV_ERROR,   "A name, a size or a mode is left out"                 },
    {"bad-number",                OV_ERROR,   "A number is out of range or hexadecimal"              },
    {"unknown-package",           OV_ERROR,   "A suite names a package that is not above"            },
    {"unknown-suite",             OV_ERROR,   "A configuration names a suite that is not above"      },
    {"bad-icon",                  OV_ERROR,   "An icon has no comma"                                 },
    {"configuration-line",        OV_ERROR,   "A line in a section is no configuration"              },
    {"section-missing",           OV_ERROR,   "ConfigBegin or ConfigEnd is not there"                },
    {"module-missing",            OV_ERROR,   "The medium has no such module for this machine"       },
    {"symbol-missing",            OV_ERROR,   "A module lacks what is used of it"                    },
    {"source-missing",            OV_ERROR,   "The medium has no such file or archive"               },
    {"source-unreadable",         OV_ERROR,   "A file or an archive cannot be read to its end"       },
    {"archive-kind",              OV_ERROR,   "An archive is compressed otherwise than its line says"},
    {"archive-unsafe",            OV_ERROR,   "An archive has a member that does not belong in one"  },
    {"member-missing",            OV_ERROR,   "A listed member is not in the archive"                },
    {"member-unlisted",           OV_WARNING, "A member of the archive is not listed"                },
    {"size-differs",              OV_WARNING, "A size is not the one given"                          },
    {"mode-odd",                  OV_WARNING, "A mode is not octal, or keeps the owner from reading" },
    {"outside-destination",       OV_WARNING, "A target leads out of the product's directory"        },
    {"shared-target",             OV_WARNING, "Two packages install the same path"                   },
    {"directory-stays",           OV_NOTE,    "A removal leaves a directory behind"                  },
    {"link-target-missing",       OV_WARNING, "Nothing installs what a link leads to"                },
    {"shortcut-unused",           OV_NOTE,    "An installation does nothing with it"                 },
    {"duplicate-package",         OV_ERROR,   "A package of that name is above"                      },
    {"duplicate-suite",           OV_ERROR,   "A suite of that name is above"                        },
    {"duplicate-configuration",   OV_ERROR,   "A configuration of that number is above"              },
    {"child-order",               OV_ERROR,   "A member's number is not greater than its list's"     },
    {"unknown-child",             OV_ERROR,   "A member has no configuration"                        },
    {"configuration-missing",     OV_ERROR,   "A configuration that setup begins with is not there"  },
    {"configuration-kind",        OV_ERROR,   "A configuration is of the wrong kind for its place"   },
    {"too-many-members",          OV_WARNING, "A page or a list has no room for so many members"     },
    {"list-flag",                 OV_WARNING, "A list's flag makes the space required too small"     },
    {"button-unchosen",           OV_WARNING, "A page's button has nothing to install"               },
    {"unused-package",            OV_WARNING, "No suite has the package"                             },
    {"unused-suite",              OV_WARNING, "No configuration stands for the suite"                },
    {"unreachable-configuration", OV_WARNING, "No page and no list leads to the configuration"       },
    {"name-long",                 OV_ERROR,   "A name is too long for the history, or for a file"    },
    {"version-not-number",        OV_WARNING, "The version does not begin with a number"             },
    {"too-many-directories",      OV_WARNING, "A suite has more directories than are removed"        },
    {"eula-missing",              OV_ERROR,   "The licence is not there"                             },
    {"help-missing",              OV_NOTE,    "There is no help"                                     },
    {"line-ends",                 OV_ERROR,   "Lines end in carriage returns"                        },
    {"blank-behind-backslash",    OV_WARNING, "A line is not continued"                              },
    {"quote-in-word",             OV_WARNING, "A quote stands in a word that is not quoted"          },
    {"not-utf8",                  OV_WARNING, "A text cannot be shown"                               },
    {nullptr,                     OV_NOTE,    nullptr                                                },
};

/* In the order of OV_Severity; SARIF has the same words. */
static const char *const s_apSeverities[] = {"error", "warning", "note"};
static_assert(sizeof(s_apSeverities) / sizeof(*s_apSeverities) == OV_SEVERITY_COUNT,
              "a word for every severity");

OV_Finding *OV_mediumAddFinding(OV_Findings *pFindings, const char *pCode, OV_Spot spot,
                                const std::string &message, const std::string &subject)
{
    const OV_FindingKind *pKind = OV_mediumFindingKinds;

    while (pKind->pCode && strcmp(pKind->pCode, pCode) != 0)
        pKind++;
    if (!pKind->pCode)
        abort(); /* a code that is no code */
    pFindings->all.push_back({pKind, pKind->severity, false, spot, message, subject});
    return &pFindings->all.back();
}

size_t OV_mediumCountFindings(const OV_Findings *pFindings, OV_Severity severity)
{
    return static_cast<size_t>(
        std::count_if(pFindings->all.begin(), pFindings->all.end(),
                      [severity](const OV_Finding &one) { return one.severity == severity; }));
}

static bool standsBefore(const OV_Finding &one, const OV_Finding &other)
{
    if (one.spot.iLine != other.spot.iLine)
        return one.spot.iLine < other.spot.iLine;
    return one.spot.iColumn < other.spot.iColumn;
}

/* ---- text ---- */

static std::string counted(const OV_Findings *pFindings, OV_Severity severity)
{
    const size_t iCount = OV_mediumCountFindings(pFindings, severity);

    return std::to_string(iCount) + " " + s_apSeverities[severity] + (iCount == 1 ? "" : "s");
}

static void printText(const OV_Findings *pFindings, const OV_FindingsReport *pReport)
{
    for (const OV_Finding &finding : pFindings->all)
        OV_mediumPrint("%s:%d:%d: %s: %s [%s]", pReport->description.c_str(), finding.spot.iLine,
                       finding.spot.iColumn, s_apSeverities[finding.severity],
                       finding.message.c_str(), finding.pKind->pCode);
    OV_mediumPrint("%s, %s, %s", counted(pFindings, OV_ERROR).c_str(),
                   counted(pFindings, OV_WARNING).c_str(), counted(pFindings, OV_NOTE).c_str());
}

/* ---- for programs ---- */

static void printJson(const OV_Findings *pFindings, const OV_FindingsReport *pReport)
{
    Json findings = Json::array();

    for (const OV_Finding &finding : pFindings->all)
        findings.push_back({
            {"severity", s_apSeverities[finding.severity]},
            {"code",     finding.pKind->pCode            },
            {"rejects",  finding.bRejects                },
            {"line",     finding.spot.iLine              },
            {"column",   finding.spot.iColumn            },
            {"message",  finding.message                 },
            {"subject",  finding.subject                 }
        });
    OV_mediumPrintJson("check", {
                                    {"description",                     pReport->description            },
                                    {"accepted",                        pReport->bAccepted              },
                                    {"errors",                          OV_mediumCountFindings(pFindings, OV_ERROR)},
                                    {"warnings",                                 OV_mediumCountFindings(pFindings,                                                        OV_WARNING)},
                                    {"notes",                      OV_mediumCountFindings(pFindings,OV_NOTE)},
                                    {"findings",findings     }
    });
}

/* A path as a reference relative to nothing in particular, or as an address of its own. */
static std::string asReference(const std::string &path)
{
    static const char s_caPlain[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/";
    std::string reference = !path.empty() && path[0] == '/' ? "file://" : "";
    char caEscape[4];

    for (char c : path) {
        if (c && strchr(s_caPlain, c)) {
            reference += c;
            continue;
        }
        (void)snprintf(caEscape, sizeof(caEscape), "%%%02X",
                       static_cast<unsigned>(static_cast<unsigned char>(c))); /* fits */
        reference += caEscape;
    }
    return reference;
}

static Json rules()
{
    Json all = Json::array();

    for (const OV_FindingKind *pKind = OV_mediumFindingKinds; pKind->pCode; pKind++)
        all.push_back({
            {"id",                   pKind->pCode                                },
            {"shortDescription",     {{"text", pKind->pTitle}}                   },
            {"defaultConfiguration", {{"level", s_apSeverities[pKind->severity]}}}
        });
    return all;
}

static void printSarif(const OV_Findings *pFindings, const OV_FindingsReport *pReport)
{
    const Json place = {
        {"uri", asReference(pReport->description)}
    };
    Json results = Json::array();

    for (const OV_Finding &finding : pFindings->all) {
        const Json region = {
            {"startLine",   finding.spot.iLine  },
            {"startColumn", finding.spot.iColumn}
        };
        const Json location = {
            {"physicalLocation", {{"artifactLocation", place}, {"region", region}}}
        };
        results.push_back({
            {"ruleId",    finding.pKind->pCode                 },
            {"ruleIndex", finding.pKind - OV_mediumFindingKinds},
            {"level",     s_apSeverities[finding.severity]     },
            {"message",   {{"text", finding.message}}          },
            {"locations", Json::array({location})              }
        });
    }
    const Json driver = {
        {"name",    "ovmedium"              },
        {"version", OV_mediumVersionNumber()},
        {"rules",   rules()                 }
    };
    const Json run = {
        {"tool",    {{"driver", driver}}},
        {"results", results             }
    };
    const Json whole = {
        {"$schema", "https://json.schemastore.org/sarif-2.1.0.json"},
        {"version", "2.1.0"                                        },
        {"runs",    Json::array({run})                             }
    };
    fprintf(OV_mediumOut(), "%s\n",
            whole.dump(2, ' ', false, Json::error_handler_t::replace).c_str());
}

void OV_mediumPrintFindings(OV_Findings *pFindings, const OV_FindingsReport *pReport,
                            OV_MediumFormat format)
{
    std::stable_sort(pFindings->all.begin(), pFindings->all.end(), standsBefore);
    if (format == OV_MEDIUM_JSON)
        printJson(pFindings, pReport);
    else if (format == OV_MEDIUM_SARIF)
        printSarif(pFindings, pReport);
    else
        printText(pFindings, pReport);
}
