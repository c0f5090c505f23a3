#include "medium/lastRun.h"

#include <algorithm>
#include <sys/stat.h>
#include <unistd.h>

#include "engine/history.h"
#include "engine/runLock.h"
#include "engine/setupState.h"
#include "medium/examine.h"
#include "medium/model.h"
#include "ut/OVinstLogfile.h"
#include "ut/guardedFile.h"
#include "ut/owned.h"

static const char s_caHeader[] = ">>>>>>> SETUP Log File created on ";
static const char s_caWarning[] = "Warning: ";
static const char s_caCompleted[] = "Installation Completed";
static const char s_caFailed[] = "Error during the installation";
static const char s_caRepaired[] = "Repair Completed";

/* A file that a run has written; the time is zero where there is none. */
struct Trace {
    std::string path;
    struct timespec written;
};

static bool startsWith(const std::string &text, const char *pStart)
{
    return text.rfind(pStart, 0) == 0;
}

/* ---- the log ---- */

/* The log of the model in use, or of a description; empty for none. */
static std::string logOf(const OV_MediumTree *pTree, const _OV_instCDinst *pModel)
{
    if (!pModel || !pModel->pLogFile || !pModel->pLogFile[0])
        return "";
    return pTree->dest + pModel->pLogFile;
}

static std::string logIn(const OV_MediumTree *pTree, const std::string &description)
{
    OV_TreeObject found;

    if (!OV_mediumLook(description, &found) || found.iError || !S_ISREG(found.info.st_mode))
        return "";
    OV_Reading reading = {};
    OV_mediumRead(description.c_str(), &reading);
    return logOf(pTree, reading.model.get()); /* the header will do */
}

/* The description that the last run has left in the tree names it; without that, the medium's. */
static std::string findLog(const OV_MediumTree *pTree)
{
    std::string path = logOf(pTree, CDInstPtr);

    if (path.empty())
        path = logIn(pTree, pTree->dest + "cdinst.dat");
    if (path.empty() && !pTree->state.source.empty())
        path = logIn(pTree, OV_mediumDescription(pTree->state.source));
    return path;
}

static bool readLine(FILE *pFile, std::string *pLine)
{
    char *pText = nullptr;
    size_t iSize = 0;
    const ssize_t iLength = getline(&pText, &iSize, pFile);
    OwnedText text(pText);

    if (iLength <= 0)
        return false;
    pLine->assign(pText, static_cast<size_t>(iLength));
    if (pLine->back() == '\n')
        pLine->pop_back();
    return true;
}

static std::vector<std::string> readLog(Trace *pLog)
{
    std::vector<std::string> lines;
    std::string line;
    struct stat info;
    OwnedFile file(pLog->path.empty()
                       ? nullptr
                       : OV_instGuardedFopenBelieved(nullptr, pLog->path.c_str(), "r"));

    if (!file || fstat(fileno(file.get()), &info) < 0 || !S_ISREG(info.st_mode))
        return lines;
    pLog->written = info.st_mtim;
    while (readLine(file.get(), &line)) {
        if (startsWith(line, s_caHeader))
            lines.clear();
        else
            lines.push_back(line);
    }
    return lines;
}

/* ---- the verdict ---- */

static struct timespec writtenAt(const std::string &path)
{
    OV_TreeObject found;

    return OV_mediumLook(path, &found) && !found.iError ? found.info.st_mtim : timespec{0, 0};
}

static bool isBefore(const struct timespec &first, const struct timespec &second)
{
    return first.tv_sec != second.tv_sec ? first.tv_sec < second.tv_sec
                                         : first.tv_nsec < second.tv_nsec;
}

static bool hasEnd(const std::vector<std::string> &log)
{
    return !log.empty() &&
           (log.back() == s_caCompleted || log.back() == s_caFailed || log.back() == s_caRepaired);
}

/* A run file is there: the run was not complete. It writes the file before the history, and again
 * behind it when it came to its end with failed steps. The log ends later still; one that is older
 * is that of an earlier run, this one having had no place for it. */
static OV_Verdict unfinishedOrFailed(const OV_MediumTree *pTree, const OV_LastRun *pRun,
                                     const Trace *pLog)
{
    OwnedText run(OV_instRunFilePath(pTree->dest.c_str()));
    const timespec runFile = writtenAt(run ? run.get() : "");
    const timespec history =
        writtenAt(pTree->dest + OV_SETUP_FOLDER + "/" + OV_instGetHistoryFile());

    if (!pRun->log.empty() && !hasEnd(pRun->log))
        return OV_RUN_UNFINISHED;
    if (hasEnd(pRun->log) && !isBefore(pLog->written, runFile))
        return OV_RUN_FAILED;
    return pTree->bHistory && isBefore(history, runFile) ? OV_RUN_FAILED : OV_RUN_UNFINISHED;
}

static OV_Verdict judge(const OV_MediumTree *pTree, const OV_LastRun *pRun, const Trace *pLog)
{
    if (OV_instIsRunLocked(pTree->dest.c_str()))
        return OV_RUN_RUNNING;
    if (pTree->bUnfinished)
        return unfinishedOrFailed(pTree, pRun, pLog);
    if (pRun->log.empty() || pRun->log.back() == s_caRepaired)
        return OV_RUN_COMPLETE;
    if (!hasEnd(pRun->log))
        return OV_RUN_UNFINISHED;
    const bool bWarned = std::any_of(pRun->log.begin(), pRun->log.end(), [](const auto &line) {
        return startsWith(line, s_caWarning);
    });
    return bWarned || pRun->log.back() == s_caFailed ? OV_RUN_FAILED : OV_RUN_COMPLETE;
}

OV_LastRun OV_mediumLastRun(const OV_MediumTree *pTree)
{
    Trace log = {
        findLog(pTree), {0, 0}
    };
    OV_LastRun run = {OV_RUN_COMPLETE, readLog(&log)};

    run.verdict = judge(pTree, &run, &log);
    return run;
}

const char *OV_mediumVerdictWord(OV_Verdict verdict)
{
    static const char *const s_apWords[] = {"complete", "failed", "unfinished", "running"};

    return s_apWords[verdict];
}

void OV_mediumLogRepair(const OV_MediumTree *pTree)
{
    Trace log = {
        findLog(pTree), {0, 0}
    };
    const std::vector<std::string> lines = readLog(&log);

    if (lines.empty() || lines.back() == s_caRepaired || OV_instInitLogfile(log.path.c_str()) < 0)
        return;
    (void)OV_instUpdateLogfile("%s\n", s_caRepaired); /* a log is optional */
}
