// SPDX-License-Identifier: Apache-2.0
// The typed front of the settings: values, defaults, paths, handles.
#include "marlo110k/metric.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <numeric>
#include <string>
#include <vector>

#include "kernel/startup.h"
#include "marlo110k/lang.h"
#include "marlo110k/platform/stream.h"
#include "platform/base/text.h"
#include "platform/sys/settings.h"

namespace {

constexpr uint32_t kVersion = 0x0B0002BD;

class Metric : public testing::Test {
 protected:
  Metric() {
    plat::UseSettings(plat::SettingsBackend::kMemory, nullptr);
    EXPECT_EQ(S_OK, ZrMetric_Open(&metric_, u"Marlo Pro", kVersion, u"Test"));
  }
  ~Metric() override {
    ZrMetric_Close(metric_);
    plat::UseSettings(plat::SettingsBackend::kFiles, nullptr);
  }
  /// Whether the user's tree has a key; asked past the functions under test.
  static bool HasKey(const char16_t* path) {
    plat::SettingsKey* key = nullptr;
    const bool found = plat::OpenSettingsKey(plat::SettingsTree::kUser, path, &key) == 0;
    plat::CloseSettingsKey(key);
    return found;
  }
  HZRMETRIC metric_ = nullptr;
};

TEST_F(Metric, Numbers) {
  const struct {
    bool isStored;
    int32_t stored, minimum, maximum, defaultValue, result;
  } kRows[] = {{false, 0, 0, 100, 500, 100},   {false, 0, 0, 100, -5, 0}, {false, 0, 5, 5, 7, 7},
               {true, 250, 0, 100, 500, 100},  {true, -1, 0, 100, 50, 0}, {true, 99, 5, 5, 7, 99},
               {true, INT32_MIN, -8, 8, 0, -8}};
  for (const auto& row : kRows) {
    if (row.isStored) {
      ASSERT_EQ(S_OK, ZrSetMetric(metric_, -7, row.stored));
      EXPECT_EQ(row.stored, ZrGetMetric(metric_, 7));
    }
    EXPECT_EQ(row.result, ZrGetMetricEx(metric_, 7, row.minimum, row.maximum, row.defaultValue));
  }
  ASSERT_EQ(S_OK, ZrSetMetric(metric_, INT32_MIN, 3));
  EXPECT_EQ(3, ZrGetMetricUsingName(metric_, u"2147483648", 0));
  EXPECT_TRUE(ZrGetMetricBool(metric_, 7, 0));
  EXPECT_TRUE(ZrGetMetricBool(metric_, 8, 9));
  ASSERT_EQ(S_OK, ZrSetMetric(metric_, 7, 0));
  EXPECT_FALSE(ZrGetMetricBool(metric_, 7, 1));
  EXPECT_EQ(S_OK, ZrSetMetricUsingName(metric_, u"Free Name", -3));
  EXPECT_EQ(-3, ZrGetMetricUsingName(metric_, u"FREE NAME", 0));
  // A value of another type is as good as missing.
  ASSERT_EQ(S_OK, ZrSetMetricString(metric_, 1, u"ab"));
  EXPECT_EQ(4, ZrGetMetricUsingName(metric_, u"S1", 4));
}

TEST_F(Metric, Strings) {
  const struct {
    const char16_t* stored;  // Null leaves the former state, which is missing at first.
    uint32_t size;
    const char16_t* defaultText;
    int32_t keepEmpty;
    const char16_t* result;
  } kRows[] = {{nullptr, 8, u"default", 0, u"default"},
               {nullptr, 8, u"default", 1, u"default"},
               {nullptr, 4, u"default", 0, u"def"},
               {nullptr, 8, nullptr, 0, u""},
               {u"text", 8, u"default", 0, u"text"},
               {u"text", 5, u"default", 0, u"text"},
               {u"text", 4, u"d", 0, u"d"},
               {u"text", 4, nullptr, 0, u""},
               {u"", 8, u"default", 0, u"default"},
               {u"", 8, u"default", 1, u""}};
  for (const auto& row : kRows) {
    if (row.stored != nullptr) {
      ASSERT_EQ(S_OK, ZrSetMetricString(metric_, 10001, row.stored));
    }
    char16_t buffer[10];
    std::fill_n(buffer, 10, u'#');
    const std::u16string result = row.result;
    EXPECT_EQ(result.size(), ZrGetMetricStringEx(metric_, 10001, buffer, row.size, row.defaultText, row.keepEmpty));
    EXPECT_EQ(result + std::u16string(row.size - result.size(), u'\0') + std::u16string(10 - row.size, u'#'),
              std::u16string(buffer, 10));
  }
  ASSERT_EQ(S_OK, ZrSetMetricString(metric_, 10001, nullptr));
  EXPECT_EQ(0, ZrDoesMetricExist(metric_, 10001, ZRREG_SZ));

  ASSERT_EQ(S_OK, ZrSetMetricMultiString(metric_, 10001, u"a\0bc\0", 6));
  char16_t list[8] = u"#######";
  EXPECT_EQ(6U, ZrGetMetricMultiStringEx(metric_, 10001, list, 8, u"d", 0));
  EXPECT_EQ(std::u16string(u"a\0bc\0\0\0\0", 8), std::u16string(list, 8));
  EXPECT_EQ(1U, ZrGetMetricMultiStringEx(metric_, 10001, list, 5, u"d", 0));
  EXPECT_EQ(std::u16string(u"d\0\0\0\0", 5), std::u16string(list, 5));
  // Neither of the two has the other's place.
  EXPECT_EQ(0U, ZrGetMetricStringEx(metric_, 10001, list, 8, nullptr, 0));
}

TEST_F(Metric, BinaryData) {
  char buffer[16];
  std::memset(buffer, '#', sizeof buffer);
  EXPECT_EQ(0U, ZrGetMetricBinary(metric_, 7, buffer, 12));
  EXPECT_EQ(std::string(12, '\0') + "####", std::string(buffer, 16));
  ASSERT_EQ(S_OK, ZrSetMetricBinary(metric_, 7, "1234", 4));
  std::memset(buffer, '#', sizeof buffer);
  EXPECT_EQ(4U, ZrGetMetricBinary(metric_, -7, buffer, 16));
  EXPECT_EQ("1234" + std::string(12, '\0'), std::string(buffer, 16));
  EXPECT_EQ(0U, ZrGetMetricBinary(metric_, 7, buffer, 3));

  uint32_t needed = 9;
  EXPECT_EQ(E_INVALIDARG, ZrGetMetricBinaryEx(metric_, 7, buffer, 16, nullptr));
  EXPECT_EQ(S_OK, ZrGetMetricBinaryEx(metric_, 7, buffer, 16, &needed));
  EXPECT_EQ(4U, needed);
  EXPECT_EQ(ZR_E_BUFFER_TOO_SMALL, ZrGetMetricBinaryEx(metric_, 7, buffer, 3, &needed));
  EXPECT_EQ(4U, needed);
  EXPECT_EQ(S_FALSE, ZrGetMetricBinaryEx(metric_, 8, buffer, 16, &needed));
  EXPECT_EQ(0U, needed);
  EXPECT_EQ(std::string(16, '\0'), std::string(buffer, 16));
  EXPECT_EQ(ZR_E_NOT_FOUND, ZrGetMetricBinaryEx(nullptr, 7, buffer, 16, &needed));
}

TEST_F(Metric, Streams) {
  const struct {
    uint32_t bytes;
    HRESULT result;
  } kRows[] = {{0, E_UNEXPECTED}, {1, S_OK}, {2048, S_OK}, {2049, E_INVALIDARG}};
  for (const auto& row : kRows) {
    std::vector<char> data(row.bytes);
    std::iota(data.begin(), data.end(), '\1');
    IStream* stream = nullptr;
    ASSERT_EQ(S_OK, plat::CreateStreamOnBlock(nullptr, 1, &stream));
    stream->Write(data.data(), row.bytes, nullptr);
    EXPECT_EQ(row.result, ZrSetMetricStream(metric_, 3, stream)) << row.bytes;
    EXPECT_EQ(row.result == S_OK ? E_FAIL : row.result, ZrSetMetricStream(kZrKernelMetric, 3, stream));
    stream->Release();
    if (row.result != S_OK) continue;
    ASSERT_EQ(S_OK, plat::CreateStreamOnBlock(nullptr, 1, &stream));
    EXPECT_EQ(S_OK, ZrGetMetricStream(metric_, 3, stream));
    std::vector<char> read(row.bytes + 1);
    uint32_t bytes = 0;
    stream->Seek(0, STREAM_SEEK_SET, nullptr);
    stream->Read(read.data(), row.bytes + 1, &bytes);
    read.resize(bytes);
    EXPECT_EQ(data, read);
    EXPECT_EQ(E_UNEXPECTED, ZrGetMetricStream(metric_, 4, stream));
    ASSERT_EQ(S_OK, ZrSetMetricBinary(metric_, 4, nullptr, 0));
    EXPECT_EQ(E_UNEXPECTED, ZrGetMetricStream(metric_, 4, stream));
    stream->Release();
  }
  EXPECT_EQ(E_POINTER, ZrGetMetricStream(metric_, 3, nullptr));
  EXPECT_EQ(E_POINTER, ZrSetMetricStream(metric_, 3, nullptr));
}

TEST_F(Metric, AnyTypeUnderTheNumbersName) {
  int32_t number = 0;
  uint32_t needed = 0;
  EXPECT_EQ(E_UNEXPECTED, ZrGetMetricAny(nullptr, 5, ZRREG_DWORD, &number, 4, &needed));
  EXPECT_EQ(ZR_E_NOT_FOUND, ZrGetMetricAny(metric_, 5, ZRREG_DWORD, &number, 4, &needed));
  ASSERT_EQ(S_OK, ZrSetMetric(metric_, 5, 77));
  EXPECT_EQ(S_OK, ZrGetMetricAny(metric_, 5, ZRREG_DWORD, &number, 4, nullptr));
  EXPECT_EQ(77, number);
  EXPECT_EQ(ZR_E_NOT_FOUND, ZrGetMetricAny(metric_, 5, ZRREG_BINARY, &number, 4, &needed));
  EXPECT_EQ(ZR_E_BUFFER_TOO_SMALL, ZrGetMetricAny(metric_, 5, ZRREG_DWORD, &number, 3, &needed));
  EXPECT_EQ(4U, needed);

  const struct {
    uint32_t storedCharacters, roomBytes;
    HRESULT result;
    uint32_t needed;
    const char16_t* text;
  } kRows[] = {{3, 8, S_OK, 6, u"abc"},
               {3, 6, ZR_E_BUFFER_TOO_SMALL, 8, u"ab"},
               {4, 8, S_OK, 8, u"abc"},
               {4, 7, ZR_E_BUFFER_TOO_SMALL, 8, nullptr}};
  plat::SettingsKey* key = nullptr;
  ASSERT_EQ(0U, plat::CreateSettingsKey(plat::SettingsTree::kUser,
                                        u"Software\\Orlu Works\\Marlo Pro\\11.0\\Metrics\\Test", &key));
  for (const auto& row : kRows) {
    ASSERT_EQ(0U, plat::SetSetting(key, u"6", ZRREG_SZ, u"abc", row.storedCharacters * 2));
    char16_t buffer[6] = u"#####";
    EXPECT_EQ(row.result, ZrGetMetricAny(metric_, 6, ZRREG_SZ, buffer, row.roomBytes, &needed));
    EXPECT_EQ(row.needed, needed);
    if (row.text != nullptr) {
      EXPECT_STREQ(plat::ToUtf8(row.text).c_str(), plat::ToUtf8(buffer).c_str());
    }
  }
  plat::CloseSettingsKey(key);
}

TEST_F(Metric, NamesExistenceAndDeletion) {
  const struct {
    uint32_t type;
    const char16_t *stored, *displayed;
  } kRows[] = {{ZRREG_DWORD, u"12", u"D12"},
               {ZRREG_SZ, u"S12", u"S12"},
               {ZRREG_BINARY, u"B12", u"B12"},
               {ZRREG_MULTI_SZ, u"Z12", u"Z12"}};
  ZrSetMetric(metric_, 12, 1);
  ZrSetMetricString(metric_, 12, u"s");
  ZrSetMetricBinary(metric_, 12, "b", 1);
  ZrSetMetricMultiString(metric_, 12, u"z\0", 3);
  for (const auto& row : kRows) {
    char16_t name[16];
    ZrMetricGetName(-12, row.type, name);
    EXPECT_EQ(std::u16string(row.displayed), name);
    EXPECT_EQ(0, ZrDoesMetricExist(metric_, 12, row.type));
    EXPECT_EQ(S_OK, ZrDeleteMetric(metric_, 12, row.type));
    EXPECT_EQ(1, ZrDoesMetricExist(metric_, 12, row.type));
    EXPECT_EQ(E_FAIL, ZrDeleteMetric(metric_, 12, row.type));
    EXPECT_EQ(1, ZrDeleteMetric(nullptr, 12, row.type));
    ASSERT_EQ(S_OK, ZrSetMetricUsingName(metric_, row.stored, 5));
    EXPECT_EQ(row.type == ZRREG_DWORD ? 0 : 1, ZrDoesMetricExist(metric_, 12, row.type)) << "of another type";
    EXPECT_EQ(S_OK, ZrDeleteMetricUsingName(metric_, row.stored, ZRREG_BINARY));
  }
}

TEST_F(Metric, PathsOfKeys) {
  const struct {
    uint32_t version;
    const char16_t *subkey, *path;
  } kRows[] = {
      {0x00010000, u"K", u"Software\\Orlu Works\\P\\Metrics\\K"},
      {0x00FFFFFF, u"K\\L", u"Software\\Orlu Works\\P\\Metrics\\K\\L"},
      {0x01000000, nullptr, u"Software\\Orlu Works\\P\\1.0\\Metrics"},
      {0xFF0A0001, u"", u"Software\\Orlu Works\\P\\255.10\\Metrics"},
  };
  for (const auto& row : kRows) {
    HZRMETRIC metric = nullptr;
    EXPECT_FALSE(HasKey(row.path));
    EXPECT_EQ(S_OK, ZrMetric_Open(&metric, u"P", row.version, row.subkey));
    EXPECT_TRUE(HasKey(row.path)) << plat::ToUtf8(row.path);
    EXPECT_EQ(ZR_S_NO_CHANGE, ZrMetric_Open(&metric, u"P", row.version, row.subkey));
    EXPECT_EQ(S_OK, ZrMetric_CloseAndDeleteKey(metric));
    EXPECT_FALSE(HasKey(row.path));
  }
  // A sub-key is told from the product, not from the parent.
  HZRMETRIC child = nullptr;
  EXPECT_EQ(E_FAIL, ZrMetric_OpenSubKey(&child, nullptr, u"MIDI"));
  EXPECT_EQ(S_OK, ZrMetric_OpenSubKey(&child, metric_, u"MIDI"));
  EXPECT_TRUE(HasKey(u"Software\\Orlu Works\\Marlo Pro\\11.0\\Metrics\\MIDI"));
  ZrMetric_Close(child);
  EXPECT_EQ(E_FAIL, ZrMetric_CloseAndDeleteKey(nullptr));

  // 260 characters are allowed; with more the handle has no key, and nothing is deleted by it.
  for (const size_t characters : {260, 261}) {
    const std::u16string path = u"A\\" + std::u16string(characters - 2, u'x');
    HZRMETRIC metric = nullptr;
    EXPECT_EQ(characters == 260 ? S_OK : ZrCode(0x800700CE), ZrMetric_OpenAppVersion(&metric, path.c_str(), nullptr));
    ASSERT_NE(nullptr, metric);
    EXPECT_EQ(characters == 260 ? S_OK : E_FAIL, ZrSetMetric(metric, 1, 1));
    if (characters == 260) {
      ZrMetric_Close(metric);
    } else {
      EXPECT_EQ(E_FAIL, ZrMetric_CloseAndDeleteKey(metric));
      EXPECT_TRUE(HasKey(path.substr(0, 260).c_str()));
    }
  }
}

TEST_F(Metric, DeletingAndListingKeys) {
  for (const char16_t* path :
       {u"Software\\C\\P\\1.2\\Metrics\\A\\B", u"Software\\C\\P\\1.2\\Lang", u"Software\\C\\P\\Q"}) {
    for (const auto tree : {plat::SettingsTree::kUser, plat::SettingsTree::kMachine}) {
      plat::SettingsKey* key = nullptr;
      ASSERT_EQ(0U, plat::CreateSettingsKey(tree, path, &key));
      plat::CloseSettingsKey(key);
    }
  }
  uint32_t length = 0;
  EXPECT_EQ(2U, ZrRegGetSubKeyCount(ZRREG_LOCAL_MACHINE, u"Software\\C\\P\\1.2", &length));
  EXPECT_EQ(8U, length);
  char16_t name[8];
  EXPECT_EQ(1, ZrRegGetSubKeyName(ZRREG_LOCAL_MACHINE, u"Software\\C\\P\\1.2", 1, name, 8));
  EXPECT_EQ(u"Metrics", std::u16string(name));
  EXPECT_EQ(0, ZrRegGetSubKeyName(ZRREG_LOCAL_MACHINE, u"Software\\C\\P\\1.2", 2, name, 8));
  EXPECT_EQ(S_OK, ZrMetric_DeleteKeyHiveAndVersion(u"P", 0x01020000, u"C", u"A"));
  EXPECT_EQ(0U, ZrRegGetSubKeyCount(ZRREG_LOCAL_MACHINE, u"Software\\C\\P\\1.2\\Metrics", &length));
  EXPECT_EQ(0U, ZrRegGetSubKeyCount(ZRREG_CURRENT_USER, u"Software\\C\\P\\1.2\\Metrics", &length));
  EXPECT_EQ(S_OK, ZrMetric_DeleteKeyHiveAndVersion(u"P", 0x01020000, u"C", nullptr));
  EXPECT_EQ(1U, ZrRegGetSubKeyCount(ZRREG_CURRENT_USER, u"Software\\C\\P\\1.2", nullptr));
  EXPECT_EQ(S_OK, ZrMetric_DeleteAllHiveAndVersion(u"P", 0x01020000, u"C"));
  EXPECT_EQ(1U, ZrRegGetSubKeyCount(ZRREG_LOCAL_MACHINE, u"Software\\C\\P", nullptr));
  EXPECT_EQ(S_OK, ZrMetric_DeleteAllHiveAndVersion(u"P", 7, u"C"));
  EXPECT_EQ(0U, ZrRegGetSubKeyCount(ZRREG_LOCAL_MACHINE, u"Software\\C", nullptr));

  EXPECT_EQ(1, ZrRegDeleteKey(ZRREG_CURRENT_USER, u"Software\\Nothing"));
  EXPECT_EQ(0, ZrRegDeleteKey(7, u"Software"));
  EXPECT_EQ(0, ZrRegDeleteKey(ZRREG_CURRENT_USER, u""));
  EXPECT_EQ(S_OK, ZrMetric_DeleteUserMetrics(u"Marlo Pro", kVersion));
  EXPECT_EQ(E_FAIL, ZrSetMetric(metric_, 1, 1)) << "its key is gone";
  EXPECT_EQ(0, ZrGetMetric(metric_, 1));
}

TEST_F(Metric, WithoutAKey) {
  char16_t text[4] = u"###";
  EXPECT_EQ(0, ZrGetMetric(nullptr, 1));
  EXPECT_EQ(9, ZrGetMetricUsingName(nullptr, u"n", 9));
  EXPECT_EQ(1U, ZrGetMetricStringEx(nullptr, 1, text, 4, u"d", 1));
  EXPECT_EQ(1, ZrDoesMetricExist(nullptr, 1, ZRREG_SZ));
  ZrMetric_Close(nullptr);
  for (HZRMETRIC metric : {HZRMETRIC{nullptr}, kZrKernelMetric}) {
    EXPECT_EQ(E_FAIL, ZrSetMetricUsingName(metric, u"n", 1));
    EXPECT_EQ(E_FAIL, ZrSetMetricString(metric, 1, u"s"));
    EXPECT_EQ(E_FAIL, ZrSetMetricBinary(metric, 1, "b", 1));
    EXPECT_EQ(E_FAIL, ZrSetMetricMultiString(metric, 1, u"m\0", 3));
  }
  EXPECT_EQ(E_FAIL, ZrSetMetric(nullptr, 1, 1));
}

TEST_F(Metric, TheLibrarysOwnSettingsLiveFromLoadToUnload) {
  EXPECT_EQ(S_OK, ZrSetMetric(kZrKernelMetric, 501, 4));
  EXPECT_EQ(4, ZrGetMetric(kZrKernelMetric, 501));
  HZRMETRIC kernel = nullptr;
  ASSERT_EQ(S_OK, ZrMetric_Open(&kernel, u"Marlo Pro", kVersion, u"Kernel"));
  EXPECT_EQ(4, ZrGetMetric(kernel, 501));
  ZrMetric_Close(kernel);
  uint32_t lcid = 0;
  EXPECT_EQ(1, ZrLang_SaveUserLCIDMetric(u"P", kVersion, 0x407, 0));
  marlo::Detach();
  EXPECT_EQ(E_FAIL, ZrSetMetric(kZrKernelMetric, 501, 5));
  EXPECT_EQ(0, ZrGetMetric(kZrKernelMetric, 501));
  EXPECT_EQ(0, ZrLang_LoadUserLCIDMetric(u"P", kVersion, &lcid, 0));
  EXPECT_TRUE(marlo::Attach());
  EXPECT_EQ(4, ZrGetMetric(kZrKernelMetric, 501));
  EXPECT_EQ(1, ZrLang_LoadUserLCIDMetric(u"P", kVersion, &lcid, 0));
  EXPECT_EQ(0x407U, lcid);
  EXPECT_TRUE(HasKey(u"Software\\Orlu Works\\P\\11.0\\Lang"));
}

}  // namespace
