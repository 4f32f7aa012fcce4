// SPDX-License-Identifier: Apache-2.0
#include "terminal/Table.h"

#include "terminal/Width.h"

#include <gtest/gtest.h>

namespace tvp::terminal {
namespace {

TEST(Width, OfATextIsMeasuredAndCutInColumns) {
  const struct {
    const char* text;
    std::size_t width;
    std::size_t columns;
    const char* cut;
  } cases[] = {
      {"drive", 5, 5, "drive"},     {"drive", 5, 4, "dri…"},
      {"drive", 5, 1, "…"},         {"drive", 5, 0, ""},
      {"日本語", 6, 6, "日本語"},   {"日本語", 6, 5, "日本…"},
      {"日本語", 6, 4, "日…"},      {"e\xcc\x81t", 2, 2, "e\xcc\x81t"},
      {"\xff\xfe!", 3, 2, "\xff…"},
  };
  for (const auto& [text, width, columns, cut] : cases) {
    SCOPED_TRACE(text);
    EXPECT_EQ(displayWidth(text), width);
    EXPECT_EQ(cutToWidth(text, columns), cut);
  }
}

TEST(Width, LinesAreBrokenAtBlanksOrElseAnywhere) {
  EXPECT_EQ(wrapped("two words  日本語x end", 5), "two\nwords\n 日本\n語x\nend\n");
  EXPECT_EQ(wrapped("", 5), "\n");
}

TEST(Table, LeavesOutColumnsFromTheRightAndThenCuts) {
  Table table;
  table.addColumn("NAME");
  table.addColumn("SIZE", true);
  table.addColumn("NOTE");
  table.addRow({"日本", "10 GiB", ""});
  table.addRow({"a", "5 B", "full"});
  const struct {
    std::size_t columns;
    const char* text;
  } cases[] = {
      {Terminal::UNLIMITED, "NAME    SIZE  NOTE\n日本  10 GiB\na        5 B  full\n"},
      {18, "NAME    SIZE  NOTE\n日本  10 GiB\na        5 B  full\n"},
      {17, "NAME    SIZE\n日本  10 GiB\na        5 B\n"},
      {11, "NAME\n日本\na\n"},
      {3, "NA…\n日…\na\n"},
      {12, "NAME    SIZE\n日本  10 GiB\na        5 B\n"},
  };
  for (const auto& [columns, text] : cases) {
    EXPECT_EQ(table.text({columns, false}), text) << columns;
  }
  EXPECT_EQ(table.text({3, true}), "\033[1mNA…\033[0m\n日…\na\n");
  EXPECT_EQ(table.hiddenColumns(), 2U);

  Table staying;
  staying.addColumn("NAME");
  staying.addColumn("SIZE", true);
  staying.addColumn("NOTE", false, true);
  staying.addRow({"a", "10 GiB", "full"}, nullptr, Table::Colour::Red);
  EXPECT_EQ(staying.text({12, true}), "\033[1mNAME  NOTE\033[0m\n\033[31ma     full\033[0m\n");
  EXPECT_EQ(staying.text({7, false}), "NAME  …\na     …\n") << "cut, as nothing else can be left out";
  EXPECT_EQ(staying.hiddenColumns(), 1U);
}

TEST(Table, WithoutTitlesIsCutButKeepsItsColumns) {
  Table table(Table::Kind::Untitled);
  table.addColumn("name");
  table.addColumn("value");
  EXPECT_EQ(table.text({}), "");
  table.addRow({"Description", "a long text"});
  table.addRow({"Name"});
  EXPECT_EQ(table.text({18, true}), "Description  a lo…\nName\n");
}

TEST(Table, ShowsATreeAndCutsItsRows) {
  Table table(Table::Kind::Tree);
  table.addColumn("node");
  const Table::Row root = table.addRow({"root"});
  const Table::Row left = table.addRow({"left"}, root);
  const Table::Row right = table.addRow({"right"}, root);
  table.addRow({"leaf"}, left);
  table.addRow({"leaf"}, right);
  table.addRow({"another"});
  EXPECT_EQ(table.text({}), "root\n├─ left\n│ └─ leaf\n└─ right\n  └─ leaf\nanother\n");
  EXPECT_EQ(table.text({5, false}), "root\n├─ l…\n│ └─…\n└─ r…\n  └─…\nanot…\n");
}

}  // namespace
}  // namespace tvp::terminal
