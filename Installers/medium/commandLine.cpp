#include "medium/commandLine.h"

#include <cstdio>
#include <map>

#include <CLI/CLI.hpp>

#include "medium/output.h"

static const char s_caVersion[] = "3.11";

/* What a command's words are put together from. */
enum Word : unsigned {
    MEDIUM = 1,
    STRICT = 2,
    FORMAT = 4,
    SARIF = 8,
    WRITE = 16,
    CHOICE = 32, /* --dest, --remove-all, --suite */
    NO_ROOT = 64,
    TREE = 128, /* DEST and --medium */
    REPAIRS = 256,
    NEW = 512
};

struct CommandRow {
    const char *pName;
    const char *pHelp;
    unsigned iWords;
};

static const CommandRow s_aCommands[] = {
    {"check",  "tell all that is wrong with a medium",             MEDIUM | STRICT | FORMAT | SARIF},
    {"update", "make the sizes and members of a description true", MEDIUM | WRITE                  },
    {"plan",   "tell what a run would do",                         MEDIUM | CHOICE | FORMAT        },
    {"apply",  "do what plan tells",                               MEDIUM | CHOICE | NO_ROOT       },
    {"verify", "compare an installation with its medium",          TREE | FORMAT                   },
    {"repair", "bring back what is different",                     TREE | REPAIRS                  },
    {"status", "tell what is installed",                           FORMAT                          },
    {"new",    "make a medium to begin with",                      NEW                             },
    {nullptr,  nullptr,                                            0                               },
};

/* A name that a script's variable has left empty would mean the working directory, or the
 * destination of the description. */
static std::string refuseEmpty(const std::string &text)
{
    return text.empty() ? "an empty name" : "";
}

static void refuseEmptyNames(CLI::App *pCommand)
{
    for (CLI::Option *pOption : pCommand->get_options())
        if (pOption->get_items_expected_max() > 0)
            pOption->check(refuseEmpty);
}

static void addFormat(CLI::App *pCommand, unsigned iWords, OV_MediumOptions *pOptions)
{
    std::map<std::string, OV_MediumFormat> formats = {
        {"text", OV_MEDIUM_TEXT},
        {"json", OV_MEDIUM_JSON}
    };

    if (iWords & SARIF)
        formats["sarif"] = OV_MEDIUM_SARIF;
    pCommand->add_option("--format", pOptions->format, "how to answer; text is for people")
        ->transform(CLI::Validator(
            [formats](std::string &text) {
                const auto format = formats.find(text);
                if (format == formats.end())
                    return "'" + text + "' is no format";
                text = std::to_string(format->second);
                return std::string();
            },
            ""))
        ->type_name(iWords & SARIF ? "text|json|sarif" : "text|json");
}

static void addChoice(CLI::App *pCommand, OV_MediumOptions *pOptions)
{
    pCommand->add_option("--dest", pOptions->dest, "the root destination");
    CLI::Option *pRemove =
        pCommand->add_flag("--remove-all", pOptions->bRemoveAll, "remove the product");
    pCommand->add_option("--suite", pOptions->suites, "install this suite, and no other but those")
        ->allow_extra_args(false)
        ->excludes(pRemove);
}

static void addWords(CLI::App *pCommand, unsigned iWords, OV_MediumOptions *pOptions)
{
    const bool bTree = (iWords & TREE) || iWords == FORMAT;

    if (iWords & STRICT)
        pCommand->add_flag("--strict", pOptions->bStrict, "take warnings for errors");
    if (iWords & FORMAT)
        addFormat(pCommand, iWords, pOptions);
    if (iWords & WRITE)
        pCommand->add_flag("--write", pOptions->bWrite, "put it in the description's place");
    if (iWords & CHOICE)
        addChoice(pCommand, pOptions);
    if (iWords & NO_ROOT)
        pCommand->add_flag("--noroot", pOptions->bNoRoot, "go on without being root");
    if (iWords & TREE)
        pCommand->add_option("--medium", pOptions->medium, "the medium to compare with");
    if (iWords & REPAIRS)
        pCommand->add_flag("--dry-run", pOptions->bDryRun, "only tell what would be done");
    if (iWords & MEDIUM)
        pCommand->add_option("MEDIUM", pOptions->place,
                             "the medium, or its description; the working directory without it");
    if (bTree)
        pCommand->add_option("DEST", pOptions->tree, "the root destination, or the product in it")
            ->required();
    if (iWords & REPAIRS)
        pCommand->add_option("PATH", pOptions->paths, "files of the product");
    if (iWords & NEW)
        pCommand->add_option("DIR", pOptions->tree, "a directory to make")->required();
    refuseEmptyNames(pCommand);
}

const char *OV_mediumVersionNumber()
{
    return s_caVersion;
}

int OV_mediumReadOptions(int argc, char **argv, OV_MediumOptions *pOptions)
{
    CLI::App app("The companion of authors of media and of administrators.", "ovmedium");

    app.set_version_flag("--version", std::string("ovmedium ") + s_caVersion);
    app.require_subcommand(0, 1);
    for (const CommandRow *pRow = s_aCommands; pRow->pName; pRow++)
        addWords(app.add_subcommand(pRow->pName, pRow->pHelp), pRow->iWords, pOptions);
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success &asked) { /* help or the version */
        (void)fputs(dynamic_cast<const CLI::CallForVersion *>(&asked)
                        ? (app.version() + "\n").c_str()
                        : app.help().c_str(),
                    OV_mediumOut());
        return OV_MEDIUM_CLEAN;
    } catch (const CLI::ParseError &error) {
        OV_mediumTell("%s\nRun ovmedium --help for more information.", error.what());
        return OV_MEDIUM_FAILED;
    }
    if (app.get_subcommands().empty()) { /* only now, so that a wrong one is named */
        OV_mediumTell("a command is needed\nRun ovmedium --help for more information.");
        return OV_MEDIUM_FAILED;
    }
    pOptions->command = app.get_subcommands().front()->get_name();
    return -1;
}
