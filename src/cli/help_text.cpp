#include "cli/help_text.hpp"

#include <fmt/format.h>

#include <memory>

namespace tidewell::cli {

namespace {

constexpr const char* kFooter = R"(
Exit status:
  0  done
  1  schedule: the units could not be written or removed, or systemctl refused
  2  usage error (one line on standard error); schedule: systemctl --user is not available
  3  clean: a browser whose data is ticked still runs; nothing was deleted
  4  clean: the confirmation was not answered yes; nothing was deleted
  5  clean, purge: finished; some ticked locations were left as they were (each named on standard error)
     for a reason other than an unticked row keeping them

Standard output carries only the catalogue or listing; questions, log lines and messages go to standard error.
After a clean, standard error carries its report: what was removed and its size, the rows purged from each
history database, what was left and why, and the totals ("clean --report FILE" writes it as JSON). "clean
--dry-run" changes nothing and prints on standard output what a clean would remove and purge.
Unticked wins: a ticked location is removed except what an unticked row names at the same place or inside it.

Disk layouts:
  The disk is read in the fixed layout of a macOS or a Linux disk (--layout macos or linux), under the disk root
  (--root, "/" by default). With --layout auto, the default, it is a macOS disk when <root>/Users/NAME is a
  folder and a Linux disk otherwise. NAME is --user, or the login name of whoever runs tidewell-cli (never $HOME
  or $USER).
  macOS: the home folder is <root>/Users/NAME; applications are looked for under <root>/Applications and in the
  home folder.
  Linux: the home folder is <root>/home/NAME, or without --root NAME's home in the user database (/etc/passwd);
  the browsers of Chrome's family (Chrome, Chromium, Brave, Microsoft Edge, Vivaldi, Opera), Firefox and
  Thunderbird are found by their folders in the home (~/.config, ~/.mozilla, ~/.thunderbird, and their snap and
  flatpak folders), and the system's traces in ~/.cache and ~/.local/share.
  Nothing outside the home folder is ever removed, and links are removed as links, never followed.

Files:
  <prefix>/share/tidewell/adultWord.plist
      The word list of the purge (an array of address fragments), beside the program's folder: /usr/share/tidewell
      for /usr/bin/tidewell-cli.
  ~/.config/systemd/user/tidewell-purge.timer, ~/.config/systemd/user/tidewell-purge.service
      The user timer of "schedule on" and the service it starts, which runs "tidewell-cli purge" every hour on your
      own home; under $XDG_CONFIG_HOME/systemd/user when that is set. "schedule off" removes both.
)";

// CLI11's own expanded layout runs a command's description and options into one paragraph for manual-page
// makers; here each command is a heading, its description a paragraph, and each argument and option a line of
// its own, as help2man reads them.
class HelpFormatter final : public CLI::Formatter {
public:
    std::string make_subcommands(const CLI::App* app, CLI::AppFormatMode mode) const override {
        std::string text = CLI::Formatter::make_subcommands(app, CLI::AppFormatMode::Normal);
        if (mode == CLI::AppFormatMode::All) {
            for (const CLI::App* command : app->get_subcommands({})) {
                text += "\n" + make_expanded(command);
            }
        }
        return text;
    }

    std::string make_expanded(const CLI::App* command) const override {
        std::string text = fmt::format("Command {}:\n  {}\n\n", command->get_name(), command->get_description());
        for (const CLI::Option* option : command->get_options()) {
            if (option != command->get_help_ptr() && option != command->get_help_all_ptr()) {
                text += make_option(option, option->get_positional());
            }
        }
        return text;
    }

    // The footer speaks of the whole tool: a command's own help leaves it out.
    std::string make_footer(const CLI::App* app) const override {
        return app->get_parent() == nullptr ? CLI::Formatter::make_footer(app) : std::string();
    }

    // An argument's description lists the words it takes; its name says the rest.
    std::string make_option_opts(const CLI::Option* option) const override {
        return option->get_positional() ? std::string() : CLI::Formatter::make_option_opts(option);
    }
};

} // namespace

void installHelpText(CLI::App& app) {
    app.formatter(std::make_shared<HelpFormatter>());
    app.set_help_all_flag("--help-all", "Print this help with every command's arguments and options, and exit");
    app.footer(kFooter);
}

} // namespace tidewell::cli
