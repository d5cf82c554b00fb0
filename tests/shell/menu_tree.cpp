// The menu tree against the typed list beside this file: names, indexes, captions, order,
// shortcuts, the state each item has by design, and when it may be used.
#include <QAction>
#include <QMenu>
#include <QMenuBar>
#include <QRegularExpression>
#include <QSet>
#include <QtTest>

#include "shell/frame.h"
#include "shell/menu/tree.h"
#include "shell/menu_tree.h"

using namespace kvn;
using namespace kvn::shell;

namespace {

// One line of the list: name with index, caption, and what is special, by its blanks of indent.
struct Line {
    QString text, name, special;
};

std::vector<Line> typedList() {
    QFile file(qEnvironmentVariable("KVN_SOURCE_DIR") +
               QStringLiteral("/tests/shell/menu_tree.txt"));
    std::vector<Line> lines;
    if (!file.open(QIODevice::ReadOnly)) return lines;
    for (const QString& text : QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts)) {
        if (text.startsWith(u'#')) continue;
        const QStringList parts = text.split(u'|');
        lines.push_back({text, parts[0].trimmed(), parts.value(2)});
    }
    return lines;
}

// What the bare tree shows of a line: the marks of usability belong to the frame.
QString designed(const Line& line) {
    QString special = line.special;
    special.remove(QRegularExpression(QStringLiteral("[!~?>]")));
    const QStringList parts = line.text.split(u'|');
    return parts[0] + u'|' + parts[1] + (special.isEmpty() ? QString() : u'|' + special);
}

bool partsOnlyOptically(const QAction& action) {
    return action.isSeparator() && action.objectName().contains(QStringLiteral("Dash")) &&
           action.objectName() != QStringLiteral("mnuEffectsPaletteDash");
}

QString lineOf(const QAction& action, int level) {
    QString line = QString(2 * level, u' ') + action.objectName() + u'|';
    if (action.isSeparator()) return line + u'-';
    line += action.text();
    QString special;
    if (!action.shortcut().isEmpty())
        special += u'{' + action.shortcut().toString(QKeySequence::PortableText) + u'}';
    if (action.isCheckable()) special += u'*';
    if (action.isChecked()) special += u'+';
    if (!action.isEnabled()) special += u'-';
    return line + (special.isEmpty() ? QString() : u'|' + special);
}

QStringList dump(const QList<QAction*>& actions, int level = 0) {
    QStringList text;
    for (const QAction* action : actions) {
        if (partsOnlyOptically(*action)) continue;
        text += lineOf(*action, level);
        if (action->menu()) text += dump(action->menu()->actions(), level + 1);
    }
    return text;
}

} // namespace

class MenuTreeTest : public QObject {
    Q_OBJECT

    QMenuBar bar_;
    MenuTree tree_{bar_, [](const menu::Item&) { return true; }};

  private slots:
    void standsAsTyped() {
        const std::vector<Line> want = typedList();
        const QStringList have = dump(bar_.actions());
        for (std::size_t i = 0; i < want.size() && qsizetype(i) < have.size(); ++i)
            QCOMPARE(have[qsizetype(i)], designed(want[i]));
        QCOMPARE(have.size(), qsizetype(want.size()));
    }

    // Every item of the list, with no document, with one, with one that has lost its picture.
    void everyItemIsUsableWhenItShould() {
        test::Frame frame;
        frame.start();
        const auto compare = [&](const char* when, const std::function<bool(const Line&)>& usable) {
            const QStringList enabled = frame.enabledItems();
            for (const Line& line : typedList())
                if (!line.text.endsWith(QStringLiteral("|-")))
                    QVERIFY2(enabled.contains(line.name) == usable(line),
                             qPrintable(line.name + u' ' + QLatin1String(when)));
        };
        const auto has = [](const Line& line, QChar mark) { return line.special.contains(mark); };
        compare("without a document", [&](const Line& line) { return has(line, u'!'); });
        document::frmMain* form = frame.open("a.png");
        compare("with a document", [&](const Line& line) { return !has(line, u'?'); });
        form->ImgX->Images().Clear(QString());
        compare("without a picture",
                [&](const Line& line) { return !has(line, u'?') && !has(line, u'~'); });
        form->Saved = true;
    }

    // Every item explains itself, and no key means two things.
    void explainsItselfAndSharesNoKey() {
        QSet<QString> keys;
        for (const QAction* action : bar_.findChildren<QAction*>()) {
            if (action->isSeparator() || !action->objectName().size()) continue;
            QVERIFY2(!action->statusTip().isEmpty(), qPrintable(action->objectName()));
            for (const QKeySequence& key : action->shortcuts()) {
                QVERIFY2(!keys.contains(key.toString()), qPrintable(key.toString()));
                keys.insert(key.toString());
            }
        }
    }

    // A click by itself changes no mark: the command behind it does.
    void clickLeavesTheMark() {
        QSignalSpy chosen(&tree_, &MenuTree::chosen);
        QAction* item = tree_.action(QStringLiteral("mnuSettings"), 3);
        item->trigger();
        QVERIFY(item->isChecked());
        QCOMPARE(chosen.count(), 1);
    }

    void groupGrowsAndShrinksBehindItsDesign() {
        const QString group = QStringLiteral("mnuImagesImage");
        tree_.resizeGroup(group, 1, 3);
        tree_.setCaption(group, 3, QStringLiteral("3: 10 x 10"));
        tree_.setChecked(group, 3, true);
        const QMenu* menu = tree_.menuOf(QStringLiteral("mnuImages"), 0);
        QCOMPARE(menu->actions().size(), 4);
        QCOMPARE(menu->actions().last()->text(), QStringLiteral("3: 10 x 10"));
        QCOMPARE(menu->actions().last()->objectName(), QStringLiteral("mnuImagesImage(3)"));
        QVERIFY(tree_.isChecked(group, 3));

        tree_.resizeGroup(group, 1, 0);
        QCOMPARE(menu->actions().size(), 1);
        tree_.setCaption(group, 2, QStringLiteral("gone")); // harmless

        // The mask list stands between two other items of its menu.
        const QString masks = QStringLiteral("mnuChannelsAlphaAddMask");
        tree_.resizeGroup(masks, 2, 2);
        tree_.resizeGroup(masks, 2, 1);
        QStringList names;
        for (const QAction* item : tree_.menuOf(QStringLiteral("mnuChannelsAlpha"), 0)->actions())
            names.append(item->objectName());
        QCOMPARE(names, QStringList({masks + QStringLiteral("(0)"), masks + QStringLiteral("(1)"),
                                     masks + QStringLiteral("(2)")}));
    }

    // The choice of a grown item carries its own index.
    void grownItemReportsItsIndex() {
        const QString group = QStringLiteral("mnuImagesImage");
        tree_.resizeGroup(group, 1, 2);
        int index = -1;
        const auto link = connect(&tree_, &MenuTree::chosen, this,
                                  [&](const menu::Item& item) { index = item.index; });
        tree_.action(group, 2)->trigger();
        disconnect(link);
        QCOMPARE(index, 2);
        tree_.resizeGroup(group, 1, 0);
    }

    // What is not built stays grey, says so, and still keeps what the rules decided.
    void unbuiltItemStaysGrey() {
        QMenuBar bar;
        MenuTree tree(bar, [](const menu::Item& item) { return item.member != "Save"; });
        tree.setAllEnabled(true);
        const QString save = QStringLiteral("mnuSave");
        QVERIFY(!tree.action(save)->isEnabled());
        QVERIFY(tree.isEnabled(save, menu::single));
        QVERIFY(tree.action(save)->statusTip().contains(QStringLiteral("not available yet")));
        QVERIFY(tree.action(QStringLiteral("mnuSaveAs"))->isEnabled());
    }
};

QTEST_MAIN(MenuTreeTest)
#include "menu_tree.moc"
