// JSON of values and statements.
#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <sstream>

#include "host/kwsh/json_presenter.h"
#include "host/kwsh/values.h"
#include "tests/unit/host/host_fixture.h"

namespace korvex::host {
namespace {

std::string lineOf(const Value& value) { return jsonLine(jsonValue(value.get())); }

TEST(Json, ScalarsCarryClassSizeAndData) {
    EXPECT_EQ(lineOf(makeDouble(1.5)), R"({"class": "double", "size": [1, 1], "data": [1.5]})");
    EXPECT_EQ(lineOf(makeDouble(3)), R"({"class": "double", "size": [1, 1], "data": [3]})");
    EXPECT_EQ(lineOf(makeLogical(true)), R"({"class": "logical", "size": [1, 1], "data": [true]})");
    EXPECT_EQ(lineOf(makeText(u"ab")), R"({"class": "char", "size": [1, 2], "data": "ab"})");
    EXPECT_EQ(lineOf(makeString(u"ab")), R"({"class": "string", "size": [1, 1], "data": ["ab"]})");
    EXPECT_EQ(lineOf(makeString(std::nullopt)), R"({"class": "string", "size": [1, 1], "data": [null]})");
}

TEST(Json, NumbersThatJsonHasNotAreTexts) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(jsonValue(makeDouble(std::numeric_limits<double>::quiet_NaN()).get())["data"][0], "NaN");
    EXPECT_EQ(jsonValue(makeDouble(infinity).get())["data"][0], "Inf");
    EXPECT_EQ(jsonValue(makeDouble(-infinity).get())["data"][0], "-Inf");
}

TEST(Json, DataIsInStorageOrder) {
    tests::HostSession host;
    host.run("x = {1, 'b'; \"c\", {}}");
    EXPECT_EQ(jsonLine(jsonValue(host.presenter.results.back().get())["data"]),
              R"([{"class": "double", "size": [1, 1], "data": [1]}, )"
              R"({"class": "string", "size": [1, 1], "data": ["c"]}, )"
              R"({"class": "char", "size": [1, 1], "data": "b"}, )"
              R"({"class": "cell", "size": [0, 0], "data": []}])");
}

TEST(Json, StructuresKeepTheOrderOfTheirFields) {
    constexpr std::array names = {"zebra", "ant"};
    const Value structure(kxCreateStructMatrix(1, 1, 2, names.data()));
    kxSetField(structure.get(), 0, "ant", makeDouble(1).release());
    EXPECT_EQ(lineOf(structure),
              R"({"class": "struct", "size": [1, 1], "data": [{)"
              R"("zebra": {"class": "double", "size": [0, 0], "data": []}, )"
              R"("ant": {"class": "double", "size": [1, 1], "data": [1]}}], "fields": ["zebra", "ant"]})");
}

TEST(Json, TextsAreUtf8AndEscapedWhereTheyMustBe) {
    EXPECT_EQ(jsonLine(jsonText(u"\u00e4\u20ac\U0001F600\U0010FFFF\uD7FF\uE000")),
              "\"\u00e4\u20ac\U0001F600\U0010FFFF\xED\x9F\xBF\xEE\x80\x80\"");
    EXPECT_EQ(jsonLine(jsonText(u"\"\\\n\t\u0001/")), R"("\"\\\n\u0009\u0001/")");
}

TEST(Json, UnpairedSurrogatesAreEscapes) {
    const std::u16string units = {u'a', 0xD800, u'b', 0xDC80, 0xDBFF};
    EXPECT_EQ(jsonLine(jsonText(units)), R"("a\ud800b\udc80\udbff")");
    const std::u16string reversed = {0xDC00, 0xD800};
    EXPECT_EQ(jsonLine(jsonText(reversed)), R"("\udc00\ud800")");
}

TEST(Json, LinesCanBeReadByAnyParser) {
    tests::HostSession host;
    host.run("x = {'a\"b', char(10, 0, 127, 8364), [1.5 NaN -0.25], {missing}}");
    const Json value = jsonValue(host.presenter.results.back().get());
    EXPECT_EQ(Json::parse(jsonLine(value)), value);
}

TEST(Json, ValuesNestedVeryDeeplyEndInNull) {
    tests::HostSession host;
    std::string text = "x = {1};\n";
    for (int level = 0; level < 500; ++level)
        text += "x = {x};\n";
    host.run(text + "x");
    const std::string line = jsonLine(jsonValue(host.presenter.results.back().get()));
    EXPECT_TRUE(Json::accept(line));
    EXPECT_NE(line.find("\"data\": null"), std::string::npos);
}

TEST(JsonPresenter, AStatementIsOneLineWithAllFieldsInOrder) {
    std::ostringstream output;
    JsonPresenter presenter(output);
    SourceStatement statement;
    statement.line = 3;
    statement.text = u"[s,m,id] = mkdir('a')";
    presenter.statementBegins(statement);
    presenter.printed(u"one\n");
    presenter.warned({"KORVEX:MKDIR:DirectoryExists", u"it is there"});
    presenter.printed(u"two");
    presenter.result("s", makeLogical(true).get(), false);
    presenter.failed({"KORVEX:host:interrupted", u"stopped"});
    presenter.statementEnds();
    EXPECT_EQ(
        output.str(),
        R"x({"line": 3, "statement": "[s,m,id] = mkdir('a')", "printed": "one\ntwo", )x"
        R"x("warnings": [{"id": "KORVEX:MKDIR:DirectoryExists", "text": "it is there"}], )x"
        R"x("outputs": [{"name": "s", "value": {"class": "logical", "size": [1, 1], "data": [true]}}], )x"
        R"x("error": {"id": "KORVEX:host:interrupted", "text": "stopped"}, "events": []})x"
        "\n");
}

TEST(JsonPresenter, AFailureThatIsCaughtSaysSo) {
    std::ostringstream output;
    JsonPresenter presenter(output);
    presenter.statementBegins({});
    presenter.caught({"A:b", u"text"});
    presenter.statementEnds();
    EXPECT_EQ(Json::parse(output.str())["error"],
              Json::parse(R"({"id": "A:b", "text": "text", "caught": true})"));
}

TEST(JsonPresenter, AHeadOfABlockIsALineOnlyWhenThereIsSomethingToTell) {
    std::ostringstream output;
    JsonPresenter presenter(output);
    SourceStatement head;
    head.text = u"if x";
    head.content = BlockPart();
    presenter.statementBegins(head);
    presenter.statementEnds();
    EXPECT_EQ(output.str(), "");
    presenter.statementBegins(head);
    presenter.warned({"A:b", u"text"});
    presenter.statementEnds();
    EXPECT_EQ(Json::parse(output.str())["statement"], "if x");
}

TEST(JsonPresenter, EventsStandInTheirOrderUnderTheirOwnKeys) {
    using Kind = runtime::dispatcher::EnvironmentEvent::Kind;
    std::ostringstream output;
    JsonPresenter presenter(output);
    presenter.statementBegins({});
    presenter.told({Kind::upstreamEntriesNotified, {u"/a/+b"}});
    presenter.told({Kind::pathEntriesRemoved, {u"/a", u"memory://b/\xDCFF"}});
    presenter.told({Kind::folderOutOfDate, {u"/a"}});
    presenter.told({Kind::pathRefreshRequested, {}});
    presenter.told({Kind::functionsCleared, {u"/a/f.k"}});
    presenter.told({Kind::pathEntriesRestored, {}});
    presenter.told({Kind::searchPathRefreshed, {}});
    presenter.told({Kind::functionCalled, {u"f"}});
    presenter.statementEnds();
    const std::string events = output.str().substr(output.str().find(R"("events")"));
    EXPECT_EQ(events, R"("events": [{"event": "upstreamEntriesNotified", "location": "/a/+b"}, )"
                      R"({"event": "pathEntriesRemoved", "folders": ["/a", "memory://b/\udcff"]}, )"
                      R"({"event": "folderOutOfDate", "folder": "/a"}, )"
                      R"({"event": "pathRefreshRequested"}, )"
                      R"({"event": "functionsCleared", "path": "/a/f.k"}, )"
                      R"({"event": "pathEntriesRestored"}, )"
                      R"({"event": "searchPathRefreshed"}, )"
                      R"({"event": "functionCalled", "name": "f"}]})"
                      "\n");
}

TEST(JsonPresenter, NothingOfOneStatementStaysForTheNext) {
    std::ostringstream output;
    JsonPresenter presenter(output);
    presenter.statementBegins({});
    presenter.printed(u"text");
    presenter.statementEnds();
    output.str({});
    presenter.statementBegins({});
    presenter.statementEnds();
    EXPECT_EQ(output.str(), R"({"line": 1, "statement": "", "printed": "", "warnings": [], "outputs": [], )"
                            R"("error": null, "events": []})"
                            "\n");
}

}  // namespace
}  // namespace korvex::host
