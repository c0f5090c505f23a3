#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>

#include "dialogs/gallery.h"
#include "ut/toolkit/looks.h"

struct Looks : Gallery {
    /* A widget's place within its shell. */
    struct Place {
        int iX, iY, iRight, iBottom;
    };
    static Place placeOf(Widget widget)
    {
        int iX = 0, iY = 0;
        for (Widget up = widget; !XtIsShell(up); up = XtParent(up)) {
            iX += up->core.x;
            iY += up->core.y;
        }
        return {iX, iY, iX + widget->core.width, iY + widget->core.height};
    }
    static bool isThere(Widget widget) { return XtIsManaged(widget); }
    /* All that a user sees of a dialog. */
    static std::vector<Widget> seenOf(Widget dialog)
    {
        std::vector<Widget> seen = {dialog};
        for (size_t i = 0; i < seen.size(); i++) {
            if (!XtIsComposite(seen[i]))
                continue;
            const WidgetList aChildren = resourceOf<WidgetList>(seen[i], XmNchildren);
            const Cardinal iChildren = resourceOf<Cardinal>(seen[i], XmNnumChildren);
            std::copy_if(aChildren, aChildren + iChildren, std::back_inserter(seen), isThere);
        }
        return seen;
    }
    static bool isButton(Widget widget)
    {
        return XmIsPushButton(widget) || XmIsPushButtonGadget(widget);
    }
    /* What scrolls shows a part of its contents on purpose. */
    static bool isScrolled(Widget widget)
    {
        for (Widget up = XtParent(widget); !XtIsShell(up); up = XtParent(up))
            if (XmIsScrolledWindow(up))
                return true;
        return false;
    }
    static void expectWithin(const std::string &what, int iWidth, int iHeight, Widget widget)
    {
        const CorePart &core = widget->core;
        EXPECT_TRUE(core.x >= 0 && core.x + core.width <= iWidth && core.y >= 0 &&
                    core.y + core.height <= iHeight)
            << what << ": " << XtName(widget);
    }
    static void expectFits(const std::string &name, Widget dialog)
    {
        static const std::set<std::string> s_shortened = {"laProgressDestination"};
        expectWithin(name, WidthOfScreen(XtScreen(dialog)), HeightOfScreen(XtScreen(dialog)),
                     XtParent(dialog));
        for (Widget seen : seenOf(dialog)) {
            if (seen == dialog || isScrolled(seen))
                continue;
            expectWithin(name, XtParent(seen)->core.width, XtParent(seen)->core.height, seen);
            if (s_shortened.count(XtName(seen)) ||
                !(isButton(seen) || XmIsLabel(seen) || XmIsLabelGadget(seen)))
                continue;
            XtWidgetGeometry wanted = {};
            (void)XtQueryGeometry(seen, nullptr, &wanted);
            /* In a form the ring of a default button takes a little of the margins. */
            const int iRing = XmIsPushButton(seen) ? 4 : 0;
            EXPECT_LE(wanted.width, seen->core.width + iRing) << name << ": " << XtName(seen);
            EXPECT_LE(wanted.height, seen->core.height + iRing) << name << ": " << XtName(seen);
        }
    }
    /* All buttons are seen in the smallest window that the window manager allows. */
    static void expectButtonsWhenSmall(const std::string &name, Widget dialog)
    {
        Widget shell = XtParent(dialog);
        XSizeHints hints = {};
        long lGiven = 0;
        ASSERT_TRUE(XGetWMNormalHints(XtDisplay(shell), XtWindow(shell), &hints, &lGiven) &&
                    (hints.flags & PMinSize))
            << name;
        EXPECT_GE(WidthOfScreen(XtScreen(shell)), hints.min_width) << name;
        EXPECT_GE(HeightOfScreen(XtScreen(shell)), hints.min_height) << name;
        XtVaSetValues(shell, XmNwidth, hints.min_width, XmNheight, hints.min_height, nullptr);
        settle();
        for (Widget seen : seenOf(dialog))
            for (Widget up = seen; isButton(seen) && !isScrolled(seen) && up != dialog;
                 up = XtParent(up))
                expectWithin(name + ", small", XtParent(up)->core.width, XtParent(up)->core.height,
                             up);
    }
    /* The picture of the file, in its shape and as large as texts are. */
    static void expectPicture(Widget dialog)
    {
        const Pixmap picture =
            resourceOf<Pixmap>(OV_instFindWidget(dialog, "pbMainDlg1"), XmNlabelPixmap);
        const unsigned iSide = (unsigned)OV_instScaleLength(XtDisplay(dialog), 48);
        Window root = None;
        int iAt = 0;
        unsigned iWidth = 0, iHeight = 0, iRest = 0;
        (void)XGetGeometry(XtDisplay(dialog), picture, &root, &iAt, &iAt, &iWidth, &iHeight, &iRest,
                           &iRest);
        EXPECT_EQ(iSide, iWidth);
        EXPECT_EQ(iSide, iHeight);
    }
    void showLongNames()
    {
        m_product = "Orvane Studio with Everything that Sixty Characters Can Hold";
        for (m_place = "a/long/path/"; m_place.size() < 190;)
            m_place += "directory" + std::to_string(m_place.size()) + "/";
        ASSERT_EQ(60u, m_product.size());
        ASSERT_LT(200u, (m_root + m_place).size());
    }
};

TEST_F(Looks, NothingIsCut)
{
    const struct {
        bool bLongNames;
        std::vector<std::string> words;
    } aRows[] = {
        {false, {}},
        {false, {"-xrm", "*fontSize: 20"}},
        {true, {}},
        {true, {"-display", newScreen("800x600x24", "96")}},
        {true, {"-display", newScreen("2560x1600x24", "192")}},
    };

    for (const auto &row : aRows) {
        SCOPED_TRACE(testing::PrintToString(row.words));
        if (row.bLongNames)
            showLongNames();
        reopen(row.words);
        visitAll([](const std::string &name, Widget dialog) {
            expectFits(name, dialog);
            if (name == "main page")
                expectPicture(dialog);
            expectButtonsWhenSmall(name, dialog);
        });
    }
}

/* What scrolls or takes text has the room that a larger dialog gives. */
TEST_F(Looks, LargerDialogsGiveTheirRoomToWhatNeedsIt)
{
    enum { MORE_WIDTH = 200, MORE_HEIGHT = 150 };

    visitAll([](const std::string &name, Widget dialog) {
        std::map<Widget, Place> before;
        int iWider = 0, iHigher = 0, iScrolling = 0, iFields = 0;
        Widget shell = XtParent(dialog);
        for (Widget seen : seenOf(dialog))
            before[seen] = placeOf(seen);
        XtVaSetValues(shell, XmNwidth, shell->core.width + MORE_WIDTH, XmNheight,
                      shell->core.height + MORE_HEIGHT, nullptr);
        settle();
        for (const auto &[seen, place] : before) {
            const Place now = placeOf(seen);
            const int iHeight = now.iBottom - now.iY - (place.iBottom - place.iY);
            const bool bWider = now.iRight - now.iX > place.iRight - place.iX;
            EXPECT_GE(dialog->core.width, now.iRight - before[dialog].iX) << XtName(seen);
            iScrolling += XmIsScrolledWindow(seen);
            iHigher += XmIsScrolledWindow(seen) && iHeight >= MORE_HEIGHT / 2;
            iFields += XmIsTextField(seen);
            iWider += bWider && (XmIsScrolledWindow(seen) || XmIsTextField(seen));
            EXPECT_TRUE(!XmIsTextField(seen) || iHeight == 0) << XtName(seen);
        }
        EXPECT_EQ(iScrolling > 0, iHigher > 0) << name;
        /* The main page's folder is in a row that lines its parts up from the left. */
        EXPECT_EQ(iScrolling + iFields > 0 && name != "main page", iWider > 0) << name;
    });
}

TEST_F(Looks, LettersPressTheButtons)
{
    fillModel();
    Widget dialog = managed(CreatembNameOrg(main()));
    pointAt(dialog);
    XtVaSetValues(XmMessageBoxGetChild(dialog, XmDIALOG_CANCEL_BUTTON), XmNsensitive, False,
                  nullptr);
    key("x alt+e y"); /* it is insensitive */
    EXPECT_EQ(nullptr, openBox("mbExitSetup"));
    EXPECT_EQ("xy", textIn(OV_instFindWidget(dialog, "txNameOrgName")));
    key("alt+o");
    Widget confirmation = XtNameToWidget(XtParent(dialog), "*mbNameOrgConfirm");
    ASSERT_NE(nullptr, confirmation);
    key("alt+e"); /* the page below it is blocked */
    pointAt(confirmation);
    key("Caps_Lock alt+c Caps_Lock");
    EXPECT_EQ(nullptr, XtNameToWidget(XtParent(dialog), "*mbNameOrgConfirm"));

    const Step byLetter("mbOkCancel:", [](Widget box) {
        pointAt(box);
        key("alt+n");
    });
    (void)whileUsed({byLetter}, [] {
        EXPECT_EQ(1, OV_instOkCancelMessageBox(main(), "Sure?", "Yes", "No", nullptr));
    });

    Widget custom = customPage(1);
    Widget ok = XtNameToWidget(custom, "OK");
    OV_instUpdateLabelString(ok, "OK");
    EXPECT_EQ((KeySym)'O', resourceOf<KeySym>(ok, XmNmnemonic));
    config(21)->iSelected = config(24)->iSelected = 0;
    pointAt(custom);
    key("alt+s");
    EXPECT_EQ(1, config(21)->iSelected);
    EXPECT_EQ(1, config(24)->iSelected);
}

/* From one stop of the Tab key to the next, around once. */
static std::vector<Widget> stopsOf(Widget dialog)
{
    std::vector<Widget> stops;

    for (int i = 0; i < 40; i++) {
        Widget focus = XmGetFocusWidget(dialog);
        if (!focus || (!stops.empty() && focus == stops[0]))
            break;
        if (std::find(stops.begin(), stops.end(), focus) == stops.end())
            stops.push_back(focus);
        (void)XmProcessTraversal(dialog, XmTRAVERSE_NEXT_TAB_GROUP);
    }
    return stops;
}

TEST_F(Looks, KeyboardGoesInVisualOrder)
{
    visitAll([](const std::string &name, Widget dialog) {
        const bool bBrowser = name.find("browser") != name.npos; /* the toolkit's own order */
        pointAt(dialog);
        std::vector<Widget> stops = stopsOf(dialog);
        std::string order;
        Place last = {0, 0, 0, 0};
        int iBack = -1;
        for (Widget stop : stops) {
            const Place place = placeOf(stop);
            const int iDown = (place.iY + place.iBottom - last.iY - last.iBottom) / 2;
            iBack += order.empty() || iDown < -12 || (iDown <= 12 && place.iX < last.iX);
            last = place;
            order += std::string(" ") + XtName(stop);
        }
        EXPECT_FALSE(stops.empty()) << name;
        EXPECT_EQ(order.npos, order.find("daProgress")) << "nothing to do there";
        EXPECT_GE(bBrowser ? 99 : 1, iBack) << name << order; /* it may begin in the middle */
        for (Widget seen : seenOf(dialog))
            EXPECT_TRUE(!isButton(seen) || !XtIsSensitive(seen) ||
                        std::find(stops.begin(), stops.end(), seen) != stops.end())
                << name << ": " << XtName(seen) << " not among" << order;
    });
}
