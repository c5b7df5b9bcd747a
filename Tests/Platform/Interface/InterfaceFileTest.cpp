#include "Platform/Interface/InterfaceFile.h"

#include "Platform/Interface/WindowController.h"
#include "Support/TestSupport.h"

#include <QDir>
#include <QLabel>
#include <QLineEdit>

namespace {

namespace InterfaceFile = platform::InterfaceFile;
using platform::ErrorCode;

class SpecialLabel : public QLabel
{
public:
    using QLabel::QLabel;
};

const QByteArray form = R"(<?xml version="1.0" encoding="UTF-8"?>
<ui version="4.0">
 <class>Form</class>
 <widget class="QWidget" name="Form">
  <property name="windowTitle"><string>A form</string></property>
  <layout class="QVBoxLayout" name="layout">
   <item><widget class="QLineEdit" name="title"><property name="text"><string>Hello</string></property></widget></item>
   <item><widget class="Line" name="line"><property name="orientation"><enum>Qt::Horizontal</enum></property></widget></item>
   <item><widget class="SpecialLabel" name="label"><property name="text"><string>Special</string></property></widget></item>
  </layout>
 </widget>
 <customwidgets>
  <customwidget><class>SpecialLabel</class><extends>QLabel</extends><header>SpecialLabel.h</header></customwidget>
 </customwidgets>
</ui>
)";

struct InterfaceFileTest : testing::Test {
    const QStringList before = QDir::searchPaths(QStringLiteral("interface"));

    InterfaceFileTest()
    {
        QDir::setSearchPaths(QStringLiteral("interface"), {testSupport::homePath()});
        InterfaceFile::registerClass<SpecialLabel>(QStringLiteral("SpecialLabel"));
    }
    ~InterfaceFileTest() override { QDir::setSearchPaths(QStringLiteral("interface"), before); }

    static void writeForm(const QByteArray &bytes, const char *name = "Form.ui")
    {
        testSupport::writeFile(testSupport::homePath() + u'/' + QLatin1String(name), bytes);
    }
};

TEST_F(InterfaceFileTest, MakesTheWidgetsWithTheirNamesAndClasses)
{
    writeForm(form);
    const auto loaded = InterfaceFile::load(QStringLiteral("Form"));
    ASSERT_TRUE(loaded) << qPrintable(loaded.error().toString());
    QWidget &widget = *loaded.value();
    EXPECT_EQ(widget.windowTitle(), QStringLiteral("A form"));
    ASSERT_TRUE(widget.findChild<QLineEdit *>(QStringLiteral("title")));
    EXPECT_EQ(widget.findChild<QLineEdit *>(QStringLiteral("title"))->text(), QStringLiteral("Hello"));
    auto *const label = dynamic_cast<SpecialLabel *>(widget.findChild<QLabel *>(QStringLiteral("label")));
    ASSERT_TRUE(label);
    EXPECT_EQ(label->text(), QStringLiteral("Special"));
}

TEST_F(InterfaceFileTest, AHostsFileTakesThePlaceOfAnother)
{
    writeForm(form);
    writeForm(QByteArray(form).replace("A form", "Mine"), "mine/Form.ui");
    QDir::setSearchPaths(QStringLiteral("interface"),
                         {testSupport::homePath() + QStringLiteral("/mine"), testSupport::homePath()});
    EXPECT_EQ(InterfaceFile::load(QStringLiteral("Form")).value()->windowTitle(), QStringLiteral("Mine"));
}

TEST_F(InterfaceFileTest, AWindowControllerLoadsItsWindowFromOne)
{
    writeForm(form);
    platform::WindowController controller(QStringLiteral("Form"));
    EXPECT_EQ(controller.outlet<QLineEdit>(QStringLiteral("title")).text(), QStringLiteral("Hello"));
    EXPECT_EQ(controller.window()->windowTitle(), QStringLiteral("A form")) << "without a document it keeps its own";
}

TEST_F(InterfaceFileTest, SaysThatThereIsNoSuchFile)
{
    for (const char *name : {"None", "", "../../etc/passwd", "a/b"}) {
        const auto loaded = InterfaceFile::load(QString::fromLatin1(name));
        ASSERT_FALSE(loaded);
        EXPECT_EQ(loaded.error().code, ErrorCode::NotFound);
    }
}

TEST_F(InterfaceFileTest, SaysThatAFileIsDamaged)
{
    struct Row {
        QByteArray bytes;
        bool qtWarns;
    };
    const Row rows[] = {{QByteArray(), true},
                        {"not XML", true},
                        {"<ui version=\"4.0\"></ui>", false},
                        {"<html/>", true},
                        {form.left(form.size() / 2), true}};
    for (const Row &row : rows) {
        writeForm(row.bytes);
        if (row.qtWarns)
            testSupport::expectWarning(QStringLiteral("Designer: "));
        const auto loaded = InterfaceFile::load(QStringLiteral("Form"));
        ASSERT_FALSE(loaded) << row.bytes.constData();
        EXPECT_EQ(loaded.error().code, ErrorCode::Malformed);
        EXPECT_FALSE(loaded.error().reason.isEmpty());
        EXPECT_EQ(loaded.error().path, QStringLiteral("interface:Form.ui"));
    }
}

TEST_F(InterfaceFileTest, NamesAClassThatIsNotRegistered)
{
    writeForm(QByteArray(form).replace("SpecialLabel", "UnheardOf"));
    const auto loaded = InterfaceFile::load(QStringLiteral("Form"));
    ASSERT_FALSE(loaded);
    EXPECT_EQ(loaded.error().toString(), QStringLiteral("interface:Form.ui: the class UnheardOf is not registered"));
}

TEST_F(InterfaceFileTest, AClassMayBeReplaced)
{
    writeForm(form);
    InterfaceFile::registerClass<QLabel>(QStringLiteral("SpecialLabel"));
    const auto loaded = InterfaceFile::load(QStringLiteral("Form"));
    EXPECT_FALSE(dynamic_cast<SpecialLabel *>(loaded.value()->findChild<QLabel *>(QStringLiteral("label"))));
}

} // namespace
