#include "dialogs/firstPages.h"

#include <cstdlib>
#include <cstring>

#include <Xm/MessageB.h>

#include "ut/toolkit/fieldValue.h"
#include "ut/toolkit/foldText.h"
#include "ut/toolkit/bxutils.h"
#include "ut/toolkit/looks.h"
#include "ut/owned.h"
#include "ut/privateFile.h"
#include "ut/toolkit/uiut.h"
#include "ut/toolkit/widgetTree.h"

enum { LINE_SIZE = 500, MOST_BYTES = 4 };

/* ---- one page after another ---- */

void OV_instDropHelp(Widget dialog, bool bSeparatorToo)
{
    XtUnmanageChild(XmMessageBoxGetChild(dialog, XmDIALOG_HELP_BUTTON));
    if (bSeparatorToo)
        XtUnmanageChild(XmMessageBoxGetChild(dialog, XmDIALOG_SEPARATOR));
}

void OV_instFollowWith(Widget shell, Widget (*fpCreate)(Widget parent))
{
    XtDestroyWidget(shell);
    Widget next = fpCreate(OV_instGetMainTopLevelShell());
    if (XmIsMessageBox(next))
        OV_instDropHelp(next, false);
    XtManageChild(next);
}

Widget OV_instConfirmBelow(Widget dialog, const char *pName, Widget (*fpCreate)(Widget parent))
{
    Widget shell = OV_instGetShell(dialog);
    Widget earlier = XtNameToWidget(shell, pName);

    if (earlier)
        XtDestroyWidget(earlier);
    Widget confirmation = fpCreate(shell);
    OV_instDropHelp(confirmation, false);
    return confirmation;
}

/* ---- values ---- */

static bool isText(const std::string &line)
{
    return mbstowcs(nullptr, line.c_str(), 0) != static_cast<size_t>(-1);
}

/* One line without its newline; what is too long for it is skipped. */
static bool readLine(FILE *pFile, std::string *pLine)
{
    char caLine[LINE_SIZE];

    if (!fgets(caLine, sizeof caLine, pFile))
        return false;
    *pLine = caLine;
    if (!pLine->empty() && pLine->back() == '\n') {
        pLine->pop_back();
        return true;
    }
    int iByte = getc(pFile);
    const bool bCut = iByte != EOF && iByte != '\n';
    while (iByte != EOF && iByte != '\n')
        iByte = getc(pFile);
    /* What is left of a character is none. */
    for (int i = 1; bCut && i < MOST_BYTES && !isText(*pLine) && !pLine->empty(); i++)
        pLine->pop_back();
    return true;
}

void OV_instReadFields(Widget dialog, const std::vector<const char *> &names, const char *pFile)
{
    OwnedText path(OV_instPrivatePath(pFile));
    OwnedFile file(OV_instOpenPrivate(path.get()));
    std::string line;

    for (const char *pName : names) {
        if (!file || !readLine(file.get(), &line))
            return;
        OV_instSetFieldValue(OV_instFindWidget(dialog, pName), line);
    }
}

void OV_instWriteFields(Widget dialog, const std::vector<const char *> &names, const char *pFile)
{
    OwnedText path(OV_instPrivatePath(pFile));
    std::string text;

    for (const char *pName : names) {
        std::string line = OV_instFieldValue(OV_instFindWidget(dialog, pName));
        for (char &c : line)
            c = c == '\n' ? ' ' : c; /* pasted */
        text += line + '\n';
    }
    (void)OV_instWritePrivate(path.get(), text.c_str()); /* not kept, then: setup goes on */
}

/* Nothing takes a line, too, or what is below would lie over the label beside it. */
static void reserveLine(Widget label)
{
    XmRenderTable table = nullptr;
    XmString blank = OV_instLiteralXmString(" ");

    XtVaGetValues(label, XmNrenderTable, &table, nullptr);
    XtVaSetValues(label, XmNmarginTop, table ? XmStringHeight(table, blank) : 0, nullptr);
    XmStringFree(blank);
}

void OV_instShowValue(Widget label, const std::string &text, int iWidth)
{
    if (!label)
        return;
    const int iPixels = OV_instScaleLength(XtDisplay(label), iWidth);
    OV_instSetLiteralLabel(label, OV_instFoldText(label, text.c_str(), iPixels).c_str());
    if (text.empty())
        reserveLine(label);
}
