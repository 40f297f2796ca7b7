// SPDX-License-Identifier: GPL-3.0-or-later
#include "CategoryField.h"
#include "CategoryMenu.h"
#include "ContentScrollArea.h"
#include "EditorStage.h"
#include "EditorStatusLine.h"
#include "FlowLayout.h"
#include "OneLine.h"
#include "PromptTemplateParser.h"
#include "Symbols.h"
#include "TextLabel.h"

#include <QAccessible>
#include <QLabel>
#include <QListWidget>

namespace {

// Marks of variables

struct PlaceCase
{
    QString text;
    QList<PromptTemplateParser::Placeholder> places;
};

TEST(PlaceholdersTest, areWhereTheFieldsStand)
{
    const PlaceCase cases[] = {
        {QStringLiteral("none"), {}},
        {QStringLiteral("{{a}}"), {{0, 5}}},
        {QStringLiteral("x {{ b }} {{b}}"), {{2, 7}, {10, 5}}},
        {QStringLiteral("{{{x}}}"), {{1, 5}}},
        {QStringLiteral("{{}} {{  }} {{a"), {}},
        {QStringLiteral("{{two\nlines}}"), {{0, 13}}},
    };
    for (const PlaceCase &given : cases)
        EXPECT_EQ(PromptTemplateParser::placeholders(given.text), given.places) << qPrintable(given.text);
}

TEST(EditorSymbols, areDrawn)
{
    for (const QString &name :
         {QStringLiteral("chevron.down"), QStringLiteral("checkmark"), QStringLiteral("arrow.uturn.backward"),
          QStringLiteral("square.and.arrow.down"), QStringLiteral("checkmark.seal"),
          QStringLiteral("wand.and.stars"), QStringLiteral("wand.and.stars.inverse"),
          QStringLiteral("text.quote")})
        EXPECT_TRUE(Symbols::exists(name)) << qPrintable(name);
}

// The text view

TEST(EditorTextViewTest, givesBackWhatWasPutInCharacterForCharacter)
{
    EditorTextView view;
    const QString text =
        QStringLiteral("a\tb\u00a0c\n\n\U0001f469\u200d\U0001f680 e\u0301 \u202eabc\u202c <b>x</b> &amp;");
    view.resetContent(text);
    EXPECT_EQ(view.content(), text);
    view.resetContent(QStringLiteral("a\u2028b\u2029c\r\nd"));
    EXPECT_EQ(view.content(), u"a\nb\nc\nd") << "every line break is a line feed";
}

struct FollowCase
{
    QString before;
    QString after;
};

TEST(EditorTextViewTest, aPreviewFollowsEveryChange)
{
    const FollowCase cases[] = {
        {QStringLiteral(""), QStringLiteral("abc")},
        {QStringLiteral("abc"), QStringLiteral("")},
        {QStringLiteral("abc"), QStringLiteral("abc")},
        {QStringLiteral("abc"), QStringLiteral("abXc")},
        {QStringLiteral("aaa"), QStringLiteral("aaaa")},
        {QStringLiteral("one\ntwo\nthree"), QStringLiteral("one\nthree")},
        {QStringLiteral("\U0001f600"), QStringLiteral("\U0001f601")},     // they share their first half
        {QStringLiteral("a\U0001f600b"), QStringLiteral("a\U0001fa00b")}, // and these their second
        {QStringLiteral("x\n"), QStringLiteral("\nx")},
    };
    for (const FollowCase &given : cases) {
        EditorTextView view;
        view.setPreview(true);
        view.resetContent(given.before);
        view.followContent(given.after);
        EXPECT_EQ(view.content(), given.after)
            << qPrintable(given.before) << " > " << qPrintable(given.after);
    }
}

TEST(EditorTextViewTest, tabLeavesTheTextAndReturnBreaksTheLine)
{
    PromptStage stage;
    stage.open(EditorKind::panel);
    stage.form().body().setFocus();
    stage.type(QStringLiteral("a"));
    stage.key(Qt::Key_Return);
    stage.key(Qt::Key_Return, Qt::ShiftModifier);
    stage.type(QStringLiteral("b"));
    EXPECT_EQ(stage.form().body().content(), u"a\n\nb");
    stage.key(Qt::Key_Tab);
    EXPECT_FALSE(stage.form().body().hasFocus());
}

// The flow layout

QStringList placesOf(const QWidget &host)
{
    QStringList places;
    for (const QLabel *label : host.findChildren<QLabel *>(QString(), Qt::FindDirectChildrenOnly))
        places.append(QStringLiteral("%1:%2,%3").arg(label->text()).arg(label->x()).arg(label->y()));
    places.sort();
    return places;
}

QWidget *block(const QString &text)
{
    auto *label = new QLabel(text);
    label->setFixedSize(text.size() > 1 ? 300 : 40, 20);
    return label;
}

TEST(TextLabelTest, breaksAWordThatIsWiderThanItself)
{
    TextLabel label(Theme::Type::caption, Theme::Color::text, TextLabel::Overflow::wrap);
    label.setText(QStringLiteral("Of ada@") + QString(60, u'x') + u".example");
    const int line = label.fontMetrics().height();
    const int broken = label.heightForWidth(120);
    EXPECT_GE(broken, 4 * line) << "every part of the address needs a line";
    label.resize(120, broken);
    const QImage picture = label.grab().toImage();
    const auto isPlain = [&](int y) {
        for (int x = 0; x < picture.width(); ++x) {
            if (picture.pixel(x, y) != picture.pixel(0, 0))
                return false;
        }
        return true;
    };
    bool isLastLineDrawn = false;
    for (int y = picture.height() - line; y < picture.height(); ++y)
        isLastLineDrawn = isLastLineDrawn || !isPlain(y);
    EXPECT_TRUE(isLastLineDrawn);
}

TEST(FlowLayoutTest, wrapsOntoNewLinesAndKeepsTheWidgetsThatStay)
{
    QWidget host;
    auto *flow = new FlowLayout(&host, &block, 10);
    host.resize(100, 100);
    flow->setItems({QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")});
    host.show();
    flow->activate();
    EXPECT_EQ(placesOf(host),
              QStringList({QStringLiteral("a:0,0"), QStringLiteral("b:50,0"), QStringLiteral("c:0,30")}));
    EXPECT_EQ(flow->heightForWidth(100), 50);
    EXPECT_EQ(flow->heightForWidth(500), 20);
    QWidget *kept = flow->itemAt(1)->widget();
    flow->setItems({QStringLiteral("b"), QStringLiteral("d")});
    EXPECT_EQ(flow->itemAt(0)->widget(), kept);
    EXPECT_EQ(flow->count(), 2);
    flow->setItems({});
    EXPECT_EQ(flow->heightForWidth(100), 0);
}

TEST(FlowLayoutTest, runsFromRightToLeftWhereTheLanguageDoes)
{
    QWidget host;
    host.setLayoutDirection(Qt::RightToLeft);
    auto *flow = new FlowLayout(&host, &block, 10);
    host.resize(100, 100);
    flow->setItems({QStringLiteral("a")});
    host.show();
    flow->activate();
    EXPECT_EQ(placesOf(host), QStringList({QStringLiteral("a:60,0")}));
}

TEST(VariableChipsTest, showsTheFirstOfVeryMany)
{
    QString text;
    for (int number = 0; number < 100; ++number)
        text += QStringLiteral("{{v%1}}").arg(number);
    VariableChips chips;
    chips.setText(text);
    EXPECT_EQ(chips.chips().size(), VariableChips::mostChips + 1);
    EXPECT_EQ(chips.chips().last(), u"+76");
    chips.setText({});
    EXPECT_TRUE(chips.chips().isEmpty());
    EXPECT_TRUE(chips.isHidden());
}

// Hostile names

TEST(NamesOfOthers, areShownAsOneLineOfPlainText)
{
    const QString name = QStringLiteral("<b>bold</b>\nsecond\u202egnp.exe\u2028x");
    EXPECT_EQ(OneLine::of(name), u"<b>bold</b> secondgnp.exe x");
    EXPECT_LT(OneLine::of(QString(10'000, u'W')).size(), 700);
}

TEST(NamesOfOthers, doNotBreakTheForm)
{
    const QStringList names{QString(10'000, u'W'), QStringLiteral("<img src=x>\n&amp;"),
                            QStringLiteral("\u202eevil\u202c"), QString()};
    PromptStage stage;
    for (qsizetype index = 0; index < names.size(); ++index)
        stage.desk.server.addCategory(QStringLiteral("id%1").arg(index), names.at(index),
                                      QStringLiteral("nonsense"));
    stage.open(EditorKind::panel);
    for (qsizetype index = 0; index < names.size(); ++index) {
        stage.model().selectCategory(QStringLiteral("id%1").arg(index));
        stage.form().categoryField().openMenu();
        stage.settle();
        EXPECT_EQ(stage.panel->width(), Theme::panelWidth);
        EXPECT_LE(stage.form().categoryField().menu()->geometry().right(), Theme::panelWidth);
        EXPECT_EQ(stage.form().categoryField().text(), OneLine::of(names.at(index)));
        stage.key(Qt::Key_Escape);
    }
    stage.fill(QString(10'000, u'T'), QStringLiteral("{{%1}}").arg(QString(5'000, u'v')));
    stage.settle();
    EXPECT_EQ(stage.panel->width(), Theme::panelWidth);
    EXPECT_TRUE(stage.frame().saveButton().isEnabled());
}

TEST(EditorStatusLineTest, wrapsALongMessageOverTheButtons)
{
    PromptStage stage;
    stage.desk.server.refusal = QStringLiteral("word ").repeated(200) + QStringLiteral("<b>end</b>");
    stage.open(EditorKind::panel);
    stage.fill(QStringLiteral("T"), QStringLiteral("Body"));
    stage.frame().saveButton().click();
    ASSERT_TRUE(waitUntil([&] { return stage.frame().statusLine().isVisible(); }));
    stage.settle();
    EXPECT_EQ(stage.panel->width(), Theme::panelWidth);
    EXPECT_EQ(stage.panel->height(), Theme::panelHeight);
    const auto bottom = [&](const QWidget &widget) {
        return widget.mapTo(stage.panel.get(), QPoint(0, widget.height())).y();
    };
    EXPECT_LE(bottom(stage.frame().statusLine()), bottom(stage.frame().saveButton()) - 20);
    EXPECT_LE(bottom(stage.frame().saveButton()), Theme::panelHeight);
}

// Accessibility and layout

const EditorKind kinds[] = {EditorKind::panel, EditorKind::window};

TEST(EditorAccessibility, everyControlHasANameAndIsReachedByTabOnce)
{
    for (const EditorKind kind : kinds) {
        PromptStage stage;
        stage.open(kind);
        stage.fill(QStringLiteral("T"), QStringLiteral("Body"));
        stage.form().newCategoryToggle().click();
        stage.form().titleField().setFocus();
        QStringList names;
        for (int press = 0; press < 40; ++press) {
            QWidget *focus = stage.top().focusWidget();
            QAccessibleInterface *accessible = QAccessible::queryAccessibleInterface(focus);
            ASSERT_NE(accessible, nullptr);
            const QString name = accessible->text(QAccessible::Name);
            EXPECT_FALSE(name.isEmpty()) << focus->metaObject()->className();
            EXPECT_NE(accessible->role(), QAccessible::NoRole) << qPrintable(name);
            EXPECT_GE(focus->height(), 28) << qPrintable(name);
            if (names.contains(name))
                break;
            names.append(name);
            stage.key(Qt::Key_Tab);
        }
        const QStringList start{QStringLiteral("Title"), QStringLiteral("Category: Outreach"),
                                stage.form().newCategoryToggle().text(), QStringLiteral("Category name"),
                                QStringLiteral("Purple")};
        EXPECT_EQ(names.mid(0, 5), start);
        for (const QString &needed :
             {QStringLiteral("Prompt Text"), QStringLiteral("Variable name"), QStringLiteral("Preview"),
              QStringLiteral("Cancel"), stage.frame().saveButton().text()})
            EXPECT_TRUE(names.contains(needed)) << qPrintable(needed);
        EXPECT_LT(names.indexOf(QStringLiteral("Prompt Text")),
                  names.indexOf(QStringLiteral("Variable name")));
    }
}

class EditorAtFontScale : public testing::TestWithParam<double>
{
protected:
    ~EditorAtFontScale() override { Theme::shared().forceFontScale(std::nullopt); }
};

TEST_P(EditorAtFontScale, keepsEverythingReachableAndTheButtonsInView)
{
    Theme::shared().forceFontScale(GetParam());
    for (const EditorKind kind : kinds) {
        PromptStage stage;
        stage.open(kind);
        stage.fill(QStringLiteral("Rechtsschutzversicherungsgesellschaftskorrespondenz"),
                   QStringLiteral("{{x}}"));
        stage.form().newCategoryToggle().click();
        stage.settle();
        const QRect room(QPoint(), stage.top().size());
        for (const QWidget *widget : {static_cast<QWidget *>(&stage.frame().saveButton()),
                                      static_cast<QWidget *>(&stage.frame().cancelButton())})
            EXPECT_TRUE(room.contains(QRect(widget->mapTo(&stage.top(), QPoint()), widget->size())));
        const auto *scroll = stage.form().findChild<ContentScrollArea *>();
        for (QWidget *field :
             {static_cast<QWidget *>(&stage.form().titleField()),
              static_cast<QWidget *>(&stage.form().body()), static_cast<QWidget *>(&stage.form().preview()),
              static_cast<QWidget *>(&stage.form().insertButton())}) {
            field->setFocus();
            const QRect place(field->mapTo(scroll->viewport(), QPoint()), field->size());
            EXPECT_TRUE(scroll->viewport()->rect().intersects(place)) << qPrintable(field->accessibleName());
            EXPECT_LE(place.right(), scroll->viewport()->width()) << qPrintable(field->accessibleName());
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Scales, EditorAtFontScale, testing::Values(1.0, 1.5, 2.0),
                         [](const auto &info) { return "percent" + std::to_string(int(info.param * 100)); });

} // namespace
