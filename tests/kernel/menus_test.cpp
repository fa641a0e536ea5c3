// SPDX-License-Identifier: Apache-2.0
// Menus: loading by language, culling and cleaning, finding, gray items, tokens, damaged templates.
#include "marlo110k/menus.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kernel/menu_model.h"
#include "lang_module_files.h"
#include "marlo110k/printf.h"
#include "marlo110k/resources.h"
#include "platform/base/text.h"

namespace {

using testing_support::LanguageFiles;
using Menu = std::unique_ptr<ZrMenu>;

/// A menu as text: items by comma, "-" a separator, submenus in brackets, "!" gray and "+" checked ones.
std::string Shape(HZRMENU menu) {
  std::string shape;
  ZrMenuItem item;
  for (int32_t i = 0; ZrMenu_GetItem(menu, i, &item) != 0; ++i) {
    if (i > 0) shape += ',';
    shape += item.isSeparator != 0 ? "-" : plat::ToUtf8(item.text);
    if ((item.state & kZrMenuGrayed) != 0) shape += '!';
    if ((item.state & kZrMenuChecked) != 0) shape += '+';
    if (item.submenu != nullptr) shape += '[' + Shape(item.submenu) + ']';
  }
  return shape;
}

/// The menu of such a shape; a command's id is its letter.
Menu Build(const char** shape) {
  Menu menu(ZrMenu_Create());
  for (; **shape != 0 && **shape != ']'; ++*shape) {
    if (**shape == ',') continue;
    const char16_t text[] = {static_cast<char16_t>(**shape), 0};
    ZrMenuItem item{text, nullptr, static_cast<uint32_t>(**shape), 0, **shape == '-' ? 1 : 0};
    if ((*shape)[1] == '[') {
      *shape += 2;
      item.submenu = Build(shape).release();
    }
    EXPECT_EQ(1, ZrMenu_AppendItem(menu.get(), &item));
  }
  return menu;
}

Menu Build(const char* shape) { return Build(&shape); }

TEST(Menus, LoadedByLanguage) {
  LanguageFiles files;
  const Menu menu(ZrLoadMenu(files.Language(), u"BAR"));
  EXPECT_EQ("&File[&Open,-,^*&Recent[&One!,$(AppName) %d%s],-,E&xit+],^*&Help", Shape(menu.get()));
  const Menu extended(ZrLoadMenu(files.Language(), u"EXTENDED"));
  EXPECT_EQ("&Tools[First!,-,Odd]", Shape(extended.get()));
  int32_t top = 7;
  EXPECT_EQ(extended.get(), ZrGetSubmenuByID(extended.get(), 300, &top));
  EXPECT_EQ(0, top);
  EXPECT_EQ(nullptr, ZrLoadMenu(files.Language(), u"KEYS"));
  ZrLang_UpdateKernelLCID(files.Language(), 0x407);
  EXPECT_EQ("&Datei[&Laden]", Shape(Menu(ZrLoadMenu(files.Language(), u"BAR")).get()));
  const uint32_t all[] = {201, 202, 103, 104, 0, 101};
  ZrLang_UpdateKernelLCID(files.Language(), 0x409);
  EXPECT_EQ("&File[&Open]", Shape(Menu(ZrLoadCulledMenu(files.Language(), u"BAR", all, -1, 1)).get()));
  EXPECT_EQ(nullptr, ZrLoadCulledMenu(files.Language(), u"none", all, -1, 1));
}

TEST(Menus, CullAndClean) {
  struct {
    const char *shape, *ids;
    int32_t count;
    const char *culled, *cleaned;
  } const rows[] = {{"a,-,b,-,c", "b", -1, "a,-,-,c", "a,-,c"},
                    {"a,-,b,-,c", "ab", -1, "-,-,c", "c"},
                    {"a,-,b,-,c", "cb", -1, "a,-,-", "a"},
                    {"a,-,b", "ab", 1, "-,b", "b"},
                    {"a,-,s[x,-,t[y]]", "xy", -1, "a,-,s[-,t[]]", "a"},
                    {"s[x],-,t[y],-,b", "y", -1, "s[x],-,t[],-,b", "s[x],-,b"},
                    {"s[t[x]]", "x", -1, "s[t[]]", ""},
                    {"s[x,a],x", "x", -1, "s[a],x", "s[a],x"},
                    {"a,b", "?", -1, "a,b", "a,b"},
                    {"a,b", "ab", 0, "a,b", "a,b"}};
  for (const auto& row : rows) {
    std::vector<uint32_t> ids;
    for (const char* id = row.ids; *id != 0; ++id) ids.push_back(static_cast<uint32_t>(*id));
    ids.push_back(0);
    ids.push_back('a');
    const Menu menu = Build(row.shape);
    ZrCullMenu(menu.get(), ids.data(), row.count, 0);
    EXPECT_EQ(row.culled, Shape(menu.get()));
    EXPECT_EQ(*row.cleaned == 0 ? 1 : 0, ZrCleanMenu(menu.get(), nullptr, -1));
    EXPECT_EQ(row.cleaned, Shape(menu.get())) << row.shape;
  }
  // An empty menu goes from its parent, if it is there.
  const Menu parent = Build("a,s[-],b");
  ZrMenuItem item;
  ASSERT_EQ(1, ZrMenu_GetItem(parent.get(), 1, &item));
  EXPECT_EQ(1, ZrCleanMenu(item.submenu, parent.get(), 2));
  EXPECT_EQ("a,s[],b", Shape(parent.get()));
  EXPECT_EQ(1, ZrCleanMenu(item.submenu, parent.get(), 1));
  EXPECT_EQ("a,b", Shape(parent.get()));
}

TEST(Menus, FindAndGray) {
  const Menu menu = Build("a,s[b,t[-,c]],d");
  struct {
    char id;
    const char* owner;
    int32_t position, top;
  } const rows[] = {{'a', "a,s[b,t[-,c]],d", 0, 0}, {'b', "b,t[-,c]", 0, 1}, {'c', "-,c", 1, 1},
                    {'t', "b,t[-,c]", 1, 1},        {'-', "", 9, -1},        {'?', "", 9, -1}};
  for (const auto& row : rows) {
    HZRMENU owner = nullptr;
    int32_t position = 9;
    int32_t top = 9;
    EXPECT_EQ(row.top >= 0 ? 1 : 0, ZrFindSubMenu(menu.get(), static_cast<uint32_t>(row.id), &owner, &position));
    EXPECT_EQ(row.owner, Shape(owner));
    EXPECT_EQ(row.position, position);
    EXPECT_EQ(owner, ZrGetSubmenuByID(menu.get(), static_cast<uint32_t>(row.id), &top));
    EXPECT_EQ(row.top, top);
  }
  const uint32_t ids[] = {'c', 'a', 0, 'd'};
  ZrGrayMenu(menu.get(), ids, 4);
  EXPECT_EQ("a!,s[b,t[-,c!]],d", Shape(menu.get()));
  ZrGrayAllMenuItems(menu.get());
  EXPECT_EQ("a!,s![b,t[-,c!]],d!", Shape(menu.get()));
  ZrEnableAllMenuItems(menu.get());
  EXPECT_EQ("a,s[b,t[-,c!]],d", Shape(menu.get()));
}

TEST(Menus, Tokens) {
  LanguageFiles files;
  EXPECT_EQ(1, ZrPrintF_AddToken(u"Menus.Test", u"Ton"));
  const Menu menu = Build("a,-,s[b]");
  menu->items[0].text = u"$(Menus.Test) %d%s %f";
  menu->items[2].text = u"$$";
  menu->items[2].submenu->items[0].text = std::u16string(150, u'x');
  ZrMenuReplaceTokens(menu.get());
  EXPECT_EQ("Ton 0(null) 0.000000,-,$[" + std::string(99, 'x') + "]", Shape(menu.get()));
  // As many conversions as a text can hold.
  std::u16string conversions;
  while (conversions.size() < 98) conversions += u"%s";
  menu->items[0].text = conversions;
  ZrMenuReplaceTokens(menu.get());
  EXPECT_EQ(0U, menu->items[0].text.find(u"(null)(null)"));
  EXPECT_EQ(1, ZrPrintF_DeleteToken(u"Menus.Test"));
}

// A template that ends early, or nests without end, is no menu.
TEST(Menus, Damaged) {
  LanguageFiles files;
  for (const char16_t* const name : {u"BAR", u"EXTENDED"}) {
    uint32_t bytes = 0;
    const void* const data = ZrLoadResourceCustom(files.Language(), ZrResourceId(kZrMenuResource), name, &bytes);
    ASSERT_NE(nullptr, data);
    for (uint32_t cut = 0; cut <= bytes; ++cut) {
      const std::vector<uint8_t> part(static_cast<const uint8_t*>(data), static_cast<const uint8_t*>(data) + cut);
      const Menu menu = marlo::ReadMenuTemplate(part.data(), cut);
      EXPECT_EQ(cut == bytes, menu != nullptr) << cut;
    }
  }
  std::vector<uint16_t> nested{0, 0};
  for (int i = 0; i < 100000; ++i) nested.insert(nested.end(), {0x90, 0});
  nested.insert(nested.end(), {0x80, 1, 0});
  EXPECT_EQ(nullptr, marlo::ReadMenuTemplate(reinterpret_cast<const uint8_t*>(nested.data()), nested.size() * 2));
  const uint16_t wild[] = {1, 0xFFFF, 0, 0};
  EXPECT_EQ(nullptr, marlo::ReadMenuTemplate(reinterpret_cast<const uint8_t*>(wild), sizeof wild));
}

}  // namespace
