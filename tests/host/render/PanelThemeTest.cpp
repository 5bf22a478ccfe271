#include <gtest/gtest.h>

#include <map>

#include "host/render/PanelTheme.h"

namespace {

using kibrender::PanelTheme;

TEST(PanelThemeTest, TheThemeComesFromTheOverrideTheGtkThemeOrTheSettingsFile) {
  using Values = std::map<std::string, std::string>;
  struct Case {
    Values environment;
    Values files;
    PanelTheme expected;
  };
  const std::string settings = "/home/u/.config/gtk-3.0/settings.ini";
  const Case cases[] = {
      {{}, {}, PanelTheme::Light},
      {{{"KIBBAR_PANEL_THEME", "dark"}}, {}, PanelTheme::Dark},
      {{{"KIBBAR_PANEL_THEME", "Light"}, {"GTK_THEME", "Adwaita:dark"}}, {}, PanelTheme::Light},
      // An unknown override is ignored.
      {{{"KIBBAR_PANEL_THEME", "purple"}, {"GTK_THEME", "Adwaita:dark"}}, {}, PanelTheme::Dark},
      {{{"GTK_THEME", "Arc-Dark"}}, {}, PanelTheme::Dark},
      {{{"GTK_THEME", "Adwaita"}, {"HOME", "/home/u"}}, {{settings, "gtk-theme-name=Adwaita-dark"}}, PanelTheme::Light},
      {{{"HOME", "/home/u"}}, {{settings, "[Settings]\ngtk-theme-name = Greybird-dark\n"}}, PanelTheme::Dark},
      {{{"HOME", "/home/u"}}, {{settings, "[Settings]\ngtk-application-prefer-dark-theme=1\n"}}, PanelTheme::Dark},
      {{{"HOME", "/home/u"}}, {{settings, "[Settings]\ngtk-theme-name=Adwaita\n"}}, PanelTheme::Light},
      {{{"HOME", "/x"}, {"XDG_CONFIG_HOME", "/home/u/.config"}},
       {{settings, "gtk-theme-name=Yaru-dark"}},
       PanelTheme::Dark},
      {{{"HOME", "/home/u"}}, {{settings, "garbage without equals\n=\n"}}, PanelTheme::Light},
  };
  for (const auto& test : cases) {
    auto lookup = [](const Values& values) {
      return [&values](const std::string& key) -> std::optional<std::string> {
        auto found = values.find(key);
        return found == values.end() ? std::nullopt : std::optional<std::string>(found->second);
      };
    };
    EXPECT_EQ(kibrender::detectPanelTheme(lookup(test.environment), lookup(test.files)), test.expected)
        << (test.environment.empty() ? "" : test.environment.begin()->second);
  }
  EXPECT_EQ(kibrender::panelThemeNamed("dark"), PanelTheme::Dark);
  EXPECT_EQ(kibrender::panelThemeNamed("bright"), std::nullopt);
  EXPECT_STREQ(kibrender::panelThemeName(PanelTheme::Light), "light");
}

}  // namespace
