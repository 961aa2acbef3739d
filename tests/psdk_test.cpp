#include "quorvel/names/Psdk.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "quorvel/names/LocaleCodePages.hpp"

namespace quorvel {
namespace {

using Pages = std::pair<int, int>;

Pages of(const char* locale) {
  const LocaleCodePages pages = codePagesOfLocale(locale);
  return {pages.ansi, pages.oem};
}

Pages ofProcess() { return {Psdk::getAnsiCodePage(), Psdk::getOemCodePage()}; }

const Pages kDefault{1252, 437};

// Sets LC_CTYPE for one test and puts back what was there.
class CtypeLocale {
 public:
  explicit CtypeLocale(const char* name)
      : m_before(std::setlocale(LC_CTYPE, nullptr)),
        m_isSet(std::setlocale(LC_CTYPE, name) != nullptr) {}
  ~CtypeLocale() { std::setlocale(LC_CTYPE, m_before.c_str()); }
  CtypeLocale(const CtypeLocale&) = delete;
  CtypeLocale& operator=(const CtypeLocale&) = delete;

  bool isSet() const { return m_isSet; }

 private:
  std::string m_before;
  bool m_isSet;
};

struct Overrides {
  Overrides(int ansi, int oem) { Psdk::setCodePages(ansi, oem); }
  ~Overrides() { Psdk::setCodePages(0, 0); }
  Overrides(const Overrides&) = delete;
  Overrides& operator=(const Overrides&) = delete;
};

TEST(LocaleCodePages, FollowTheLanguage) {
  EXPECT_EQ(of("de_DE"), Pages(1252, 850));
  EXPECT_EQ(of("da_DK"), Pages(1252, 850));
  EXPECT_EQ(of("is_IS"), Pages(1252, 850));
  EXPECT_EQ(of("nb_NO"), Pages(1252, 850));
  EXPECT_EQ(of("fr_CA"), Pages(1252, 850));
  EXPECT_EQ(of("pt_BR"), Pages(1252, 850));
  EXPECT_EQ(of("pt_PT"), Pages(1252, 850));
  EXPECT_EQ(of("cs_CZ"), Pages(1250, 852));
  EXPECT_EQ(of("hu_HU"), Pages(1250, 852));
  EXPECT_EQ(of("pl_PL"), Pages(1250, 852));
  EXPECT_EQ(of("ro_RO"), Pages(1250, 852));
  EXPECT_EQ(of("sl_SI"), Pages(1250, 852));
  EXPECT_EQ(of("be_BY"), Pages(1251, 866));
  EXPECT_EQ(of("bg_BG"), Pages(1251, 866));
  EXPECT_EQ(of("ru_RU"), Pages(1251, 866));
  EXPECT_EQ(of("uk_UA"), Pages(1251, 866));
  EXPECT_EQ(of("el_GR"), Pages(1253, 737));
  EXPECT_EQ(of("tr_TR"), Pages(1254, 857));
  EXPECT_EQ(of("he_IL"), Pages(1255, 862));
  EXPECT_EQ(of("iw_IL"), Pages(1255, 862));
  EXPECT_EQ(of("ar_EG"), Pages(1256, 720));
  EXPECT_EQ(of("fa_IR"), Pages(1256, 720));
  EXPECT_EQ(of("ur_PK"), Pages(1256, 720));
  EXPECT_EQ(of("et_EE"), Pages(1257, 775));
  EXPECT_EQ(of("lt_LT"), Pages(1257, 775));
  EXPECT_EQ(of("lv_LV"), Pages(1257, 775));
  EXPECT_EQ(of("vi_VN"), Pages(1258, 1258));
  EXPECT_EQ(of("th_TH"), Pages(874, 874));
  EXPECT_EQ(of("ja_JP"), Pages(932, 932));
  EXPECT_EQ(of("ko_KR"), Pages(949, 949));
}

TEST(LocaleCodePages, TakeALanguageWithoutATerritory) {
  EXPECT_EQ(of("ru"), Pages(1251, 866));
  EXPECT_EQ(of("ja.UTF-8"), Pages(932, 932));
  EXPECT_EQ(of("hsb"), Pages(1252, 850));
}

TEST(LocaleCodePages, DifferByTerritoryWhereWindowsDoes) {
  EXPECT_EQ(of("en_US"), Pages(1252, 437));
  EXPECT_EQ(of("en_ZA"), Pages(1252, 437));
  EXPECT_EQ(of("en_GB"), Pages(1252, 850));
  EXPECT_EQ(of("en_AU"), Pages(1252, 850));
  EXPECT_EQ(of("en_029"), Pages(1252, 850));
  EXPECT_EQ(of("zh_CN"), Pages(936, 936));
  EXPECT_EQ(of("zh_SG"), Pages(936, 936));
  EXPECT_EQ(of("zh_TW"), Pages(950, 950));
  EXPECT_EQ(of("zh_HK"), Pages(950, 950));
  EXPECT_EQ(of("zh_MO"), Pages(950, 950));
  EXPECT_EQ(of("mn_MN"), Pages(1251, 866));
  EXPECT_EQ(of("mn_CN"), kDefault);
  EXPECT_EQ(of("pa_PK"), Pages(1256, 720));
  EXPECT_EQ(of("pa_IN"), kDefault);
}

TEST(LocaleCodePages, DifferByScriptInAModifierOrASubtag) {
  EXPECT_EQ(of("sr_RS"), Pages(1251, 855));
  EXPECT_EQ(of("sr_RS@latin"), Pages(1250, 852));
  EXPECT_EQ(of("sr_RS.UTF-8@latin"), Pages(1250, 852));
  EXPECT_EQ(of("sr_Latn_RS"), Pages(1250, 852));
  EXPECT_EQ(of("sr-Latn"), Pages(1250, 852));
  EXPECT_EQ(of("bs_BA"), Pages(1250, 852));
  EXPECT_EQ(of("bs_BA@cyrillic"), Pages(1251, 855));
  EXPECT_EQ(of("uz_UZ"), Pages(1254, 857));
  EXPECT_EQ(of("uz_UZ@cyrillic"), Pages(1251, 866));
  EXPECT_EQ(of("az_Cyrl_AZ"), Pages(1251, 866));
}

TEST(LocaleCodePages, PreferTheScriptToTheTerritory) {
  EXPECT_EQ(of("zh_Hans_HK"), Pages(936, 936));
  EXPECT_EQ(of("zh_Hant_CN"), Pages(950, 950));
  EXPECT_EQ(of("zh-Hant"), Pages(950, 950));
}

TEST(LocaleCodePages, IgnoreCodesetsAndModifiersThatAreNoScript) {
  EXPECT_EQ(of("ru_RU.KOI8-R"), Pages(1251, 866));
  EXPECT_EQ(of("de_DE@euro"), Pages(1252, 850));
  EXPECT_EQ(of("ca_ES.UTF-8@valencia"), Pages(1252, 850));
  EXPECT_EQ(of("zh_TW.Big5"), Pages(950, 950));
}

TEST(LocaleCodePages, FoldTheCase) {
  EXPECT_EQ(of("RU_ru"), Pages(1251, 866));
  EXPECT_EQ(of("zh_tw"), Pages(950, 950));
  EXPECT_EQ(of("sr_RS@LATIN"), Pages(1250, 852));
}

TEST(LocaleCodePages, AreTheDefaultPairForLanguagesWithoutTheirOwn) {
  EXPECT_EQ(of("C"), kDefault);
  EXPECT_EQ(of("POSIX"), kDefault);
  EXPECT_EQ(of("C.UTF-8"), kDefault);
  EXPECT_EQ(of("hi_IN"), kDefault);
  EXPECT_EQ(of("ka_GE"), kDefault);
  EXPECT_EQ(of("xx_YY"), kDefault);
}

TEST(LocaleCodePages, AreTheDefaultPairForWhatIsNoLocaleName) {
  EXPECT_EQ(of(nullptr), kDefault);
  for (const char* garbage : {"",
                              "_",
                              "@",
                              ".",
                              "r",
                              "_RU",
                              "ru_",
                              "ru_RU_",
                              "ru__RU",
                              "ru_R",
                              "ru_RUS",
                              "ru_12",
                              "ru_RU_UA",
                              "ru_Cyrl_Cyrl",
                              "russian",
                              "ru RU",
                              "r1_RU",
                              "ru_RU;C",
                              "ru_RU/C/C/C/C/C",
                              "ru_RU.UTF-8/C",
                              "LC_CTYPE=ru_RU.UTF-8;LC_NUMERIC=C",
                              "Russian_Russia.1251",
                              "\xD1\x80"}) {
    EXPECT_EQ(of(garbage), kDefault) << garbage;
  }
  EXPECT_EQ(of(std::string(100000, 'r').c_str()), kDefault);
  EXPECT_EQ(of(("ru" + std::string(100000, '_')).c_str()), kDefault);
}

TEST(LocaleCodePages, HaveOneRowPerLanguageAndVariantInOrder) {
  const locale_detail::Row* before = nullptr;
  for (const auto& row : locale_detail::kRows) {
    if (before != nullptr) {
      EXPECT_LE(before->language, row.language);
      const auto* first = locale_detail::findRow(row.language, row.variant);
      EXPECT_EQ(first, &row) << row.language << ' ' << row.variant;
    }
    before = &row;
  }
}

TEST(Psdk, GivesTheDefaultPairInTheCLocale) {
  const CtypeLocale locale("C");
  ASSERT_TRUE(locale.isSet());
  EXPECT_EQ(ofProcess(), kDefault);
}

TEST(Psdk, GivesTheDefaultPairInCUtf8) {
  const CtypeLocale locale("C.UTF-8");
  if (!locale.isSet()) GTEST_SKIP() << "no such locale here";
  EXPECT_EQ(ofProcess(), kDefault);
}

TEST(Psdk, FollowsTheLocaleOfTheProcess) {
  const CtypeLocale locale("ru_RU.UTF-8");
  if (!locale.isSet()) GTEST_SKIP() << "no such locale here";
  EXPECT_EQ(ofProcess(), Pages(1251, 866));
}

TEST(Psdk, IsNotMovedByEnvironmentVariablesAlone) {
  const CtypeLocale locale("C");
  const char* lcAll = std::getenv("LC_ALL");
  const std::string before = lcAll != nullptr ? lcAll : "";
  setenv("LC_ALL", "ja_JP.UTF-8", 1);
  EXPECT_EQ(ofProcess(), kDefault);
  if (lcAll != nullptr) {
    setenv("LC_ALL", before.c_str(), 1);
  } else {
    unsetenv("LC_ALL");
  }
}

TEST(Psdk, LetsAProgramOverrideBothOrOne) {
  const CtypeLocale locale("C");
  {
    const Overrides both(932, 866);
    EXPECT_EQ(ofProcess(), Pages(932, 866));
    Psdk::setCodePages(0, 850);
    EXPECT_EQ(ofProcess(), Pages(1252, 850));
    Psdk::setCodePages(1250, 0);
    EXPECT_EQ(ofProcess(), Pages(1250, 437));
    Psdk::setCodePages(20, -1);
    EXPECT_EQ(ofProcess(), Pages(20, -1));
  }
  EXPECT_EQ(ofProcess(), kDefault);
}

TEST(Psdk, TakesOverridesFromAnyThread) {
  const CtypeLocale locale("C");
  const Overrides restore(0, 0);
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([] {
      for (int round = 0; round < 1000; ++round) {
        Psdk::setCodePages(1251, 866);
        EXPECT_EQ(ofProcess(), Pages(1251, 866));
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(ofProcess(), Pages(1251, 866));
}

}  // namespace
}  // namespace quorvel
