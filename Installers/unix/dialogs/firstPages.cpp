#include "dialogs/firstPages.h"

#include <cstdlib>
#include <cstring>

#include <Xm/MessageB.h>
#include <Xm/TextF.h>

#include "ut/toolkit/foldText.h"
#include "ut/toolkit/bxutils.h"
#include "ut/toolkit/looks.h"
#include "ut/owned.h"
#include "ut/privateFile.h"
#include "ut/toolkit/uiut.h"
#include "ut/toolkit/widgetTree.h"

enum { LINE_SIZE = 500 };

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

std::string OV_instFieldText(Widget dialog, const char *pName)
{
    Widget field = OV_instFindWidget(dialog, pName);
    char *pText = field ? XmTextFieldGetString(field) : nullptr;
    std::string text(pText ? pText : "");

    XtFree(pText);
    return text;
}

/* One line without its newline; what is too long for it is skipped. */
static bool readLine(FILE *pFile, std::string *pLine)
{
    char caLine[LINE_SIZE];

    if (!fgets(caLine, sizeof caLine, pFile))
        return false;
    *pLine = caLine;
    if (!pLine->empty() && pLine->back() == '\n')
        pLine->pop_back();
    else
        for (int iByte = getc(pFile); iByte != EOF && iByte != '\n';)
            iByte = getc(pFile);
    /* The end must not be half a character: a field would refuse the text. */
    for (int i = 0; i < 4 && mbstowcs(nullptr, pLine->c_str(), 0) == static_cast<size_t>(-1); i++)
        if (!pLine->empty())
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
        XmTextFieldSetString(OV_instFindWidget(dialog, pName), &line[0]);
    }
}

void OV_instWriteFields(Widget dialog, const std::vector<const char *> &names, const char *pFile)
{
    OwnedText path(OV_instPrivatePath(pFile));
    std::string text;

    for (const char *pName : names) {
        std::string line = OV_instFieldText(dialog, pName);
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
