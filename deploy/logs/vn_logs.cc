// vn-logs: the logs that installers have sent in, counts and durations out.
#include <unistd.h>

#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "logs/folder.h"
#include "logs/log_reader.h"
#include "logs/readable.h"
#include "logs/report.h"
#include "program/command_line.h"
#include "program/progress.h"

namespace {

using logs::Installation, logs::Kind, logs::Outcome, logs::Reading;

constexpr char kDescription[] =
    "Reads the logs that installers have put into folders of the log server, and\n"
    "tells how many installations succeeded, why others failed, and how long they\n"
    "took. Logs are sent by anyone: believe them no more than a letter.\n";

struct Options {
    std::vector<std::string> folders;
    std::string since;
    std::string until;
    std::string release;
    bool isJSON = false;
    bool isHTML = false;
    bool isQuiet = false;
};

bool isWanted(const Options& options, const Installation& installation) {
    const std::string day = logs::dateOf(installation.begin);
    return day >= options.since && (options.until.empty() || day <= options.until) &&
           (options.release.empty() || installation.release == options.release);
}

// How much of a folder is done, on a terminal that shows nothing else meanwhile.
class FolderProgress {
  public:
    FolderProgress(logs::Folder& folder, const Options& options)
        : isShown_(!options.isQuiet && bar_.isTerminal() &&
                   !(options.isJSON && isatty(STDOUT_FILENO) == 1)) {
        if (!isShown_) return;
        while (folder.next() != nullptr) ++files_;
        folder.rewind();
    }
    ~FolderProgress() { bar_.end(); }
    FolderProgress(const FolderProgress&) = delete;
    FolderProgress& operator=(const FolderProgress&) = delete;

    void step() {
        // The folder may have grown since its files were counted.
        if (!isShown_ || ++done_ > files_) return;
        const auto percentage = static_cast<unsigned>(100 * done_ / files_);
        if (percentage == shown_) return;
        bar_.show(percentage, {std::to_string(done_) + " of " + std::to_string(files_) + " files"});
        shown_ = percentage;
    }

  private:
    program::Progress bar_;
    bool isShown_;
    uint64_t files_ = 0;
    uint64_t done_ = 0;
    std::optional<unsigned> shown_;
};

class Run {
  public:
    explicit Run(const Options& options) : options_(options) {}

    int run() {
        for (const std::string& path : options_.folders) readFolder(path);
        if (!hasFolder_) return 1;
        if (options_.isHTML) {
            std::cout << logs::page(statistics_);
        } else if (!options_.isJSON) {
            logs::print(statistics_);
        }
        if (statistics_.unreadable > 0) {
            std::cerr << "vn-logs: logs that could not be read: " << statistics_.unreadable << '\n';
        }
        return isWhole_ && statistics_.unreadable == 0 ? 0 : 1;
    }

  private:
    // What is wrong with one folder does not keep the others from being read.
    void readFolder(const std::string& path) try {
        logs::Folder folder(path);
        hasFolder_ = true;
        FolderProgress progress(folder, options_);
        // Part by part, because a long text would lose its middle.
        std::filesystem::path shown;
        for (const auto& part : std::filesystem::path(path)) shown /= logs::readable(part.string());
        while (const char* name = folder.next()) {
            progress.step();
            readFile(folder, name, shown / name);
        }
    } catch (const logs::FolderError& error) {
        std::cerr << "vn-logs: " << error.what() << '\n';
        isWhole_ = false;
    }

    void readFile(const logs::Folder& folder, const char* name, const std::string& shown) {
        const std::string machine(logs::machineOf(name));
        std::optional<Outcome> last;
        logs::LogReader reader([&](const Installation& installation) {
            if (!isWanted(options_, installation)) return;
            statistics_.add(installation, machine);
            last = installation.outcome;
            if (options_.isJSON) logs::printJSON(installation, machine, shown);
        });
        const Reading reading = machine.empty()
                                    ? Reading::NoLogFile
                                    : folder.read(name, [&](auto bytes) { reader.read(bytes); });
        const Kind kind = reader.finish();
        if (last) statistics_.endMachine(*last);
        if (reading == Reading::Failed) ++statistics_.unreadable;
        if (reading == Reading::Read && kind == Kind::CutLog) ++statistics_.cutLogs;
        if (reading == Reading::NoLogFile || (reading == Reading::Read && kind == Kind::NoLog)) {
            ++statistics_.noLogs;
        }
        // At once, because nobody waits for the rest who cannot have this.
        if (options_.isJSON) program::finishOutput();
    }

    const Options& options_;
    logs::Statistics statistics_;
    bool isWhole_ = true;
    bool hasFolder_ = false;
};

int report(const Options& options) try {
    return Run(options).run();
} catch (const std::system_error& error) {
    // A reader that has had enough, such as head(1), wants no complaint.
    if (error.code() == std::errc::broken_pipe) return 0;
    throw;
}

void addDay(CLI::App& app, const char* name, std::string& day, const char* description) {
    app.add_option(name, day, description)
        ->type_name("YYYY-MM-DD")
        ->check([](const std::string& text) -> std::string {
            return logs::timeOf(text) ? "" : "'" + text + "' is no day such as 2026-11-22";
        });
}

program::Body setUp(CLI::App& app) {
    const auto options = std::make_shared<Options>();
    app.add_option("FOLDER", options->folders, "Folders of logs")->required()->type_name("");
    CLI::Option* json = app.add_flag("--json", options->isJSON,
                                     "Print a line of JSON for each installation, not the tables");
    app.add_flag("--html", options->isHTML, "Print a page with plots, not the tables")
        ->excludes(json);
    addDay(app, "--since", options->since,
           "Only installations that began on this day (UTC) or later");
    addDay(app, "--until", options->until, "Only installations that began on this day or earlier");
    app.add_option("--release", options->release, "Only installations of this client")
        ->type_name("NAME");
    app.add_flag("-q,--quiet", options->isQuiet, "No progress");
    app.footer(
        "Exit status: 0 all was read, 1 something could not be read or written, 2 wrong command "
        "line.");
    return [options] { return report(*options); };
}

}  // namespace

int main(int argc, char** argv) { return program::run("vn-logs", kDescription, setUp, argc, argv); }
