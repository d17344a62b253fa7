#include "growtree.h"

#include <algorithm>
#include <exception>
#include <filesystem>
#include <istream>
#include <memory>
#include <new>
#include <optional>
#include <ostream>
#include <sstream>
#include <system_error>

#include "growing.h"
#include "options/option_parser.h"
#include "options/refusal.h"
#include "options/settings.h"
#include "options/variables.h"
#include "output/draw_tree.h"
#include "output/output_error.h"
#include "output/print_details.h"
#include "output/print_gains.h"
#include "output/print_sequence.h"
#include "output/print_summary.h"
#include "output/print_tree.h"
#include "output/svg.h"
#include "output/whole_file.h"
#include "output/write_cases.h"
#include "progress/progress_bar.h"
#include "tree/grow/csv.h"
#include "tree/grow/grower.h"

namespace tree::cli {
namespace {

constexpr char kStandard[] = "-";

/// One line on the error stream, whatever the text holds.
void Say(Console const& console, std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20; }, ' ');
  console.err << "growtree: " << text << '\n';
}

void RequireWritten(std::ostream& out) {
  if (!out.flush()) throw OutputError("standard output cannot be written");
}

/// A result that goes to a file.
struct Result {
  char const* option;
  std::string const& file;
  std::function<void(std::ostream&)> write;
};

/// Does some work, whose failure is put down to an option.
template <class Work>
auto For(char const* option, Work work) {
  try {
    return work();
  } catch (OutputError const& error) {
    throw OutputError(std::string(option) + ": " + error.what());
  }
}

/// A finished tree, and what it was grown on.
struct Grown {
  grow::DataSet const& data;
  grow::CaseRoles const& roles;
  grow::Grower const& grower;
  ShownTree const& tree;
  std::vector<PruningStep> const& sequence;
};

/// One run of the program that grows a tree.
class Session {
 public:
  Session(Options const& options, Console const& console)
      : options_(options),
        console_(console),
        progress_(console.err, console.terminalWidth,
                  [&console] { return console.caughtSignal() != 0; }) {}

  void Run() {
    CheckFiles();
    grow::CsvData const csv = Read();
    grow::CaseRoles const roles = FindRoles(options_.variables, csv.data);
    std::unique_ptr<AlgSettings const> const settings = MakeSettings(options_, csv.data, roles);
    if (options_.gains.AreWanted()) {
      gains_ = MakeGainsSettings(options_.gains, csv.data.GetColumn(roles.target).description);
    }
    std::unique_ptr<grow::Grower> const grower = MakeGrower(csv.data, roles, *settings);
    StopIfInterrupted();
    Remark(csv.remarks);
    Remark(LeftOutRemarks(grower->GetLeftOut(), options_.variables));
    CheckSamples(*grower);
    std::vector<PruningStep> const sequence = GrowTree(*grower, options_, progress_);
    Remark(grower->GetRemarks());

    TreeNames const names = NamesOf(csv.data, roles);
    ShownTree const tree(*grower->GetRootNode(), names, *settings);
    Grown const grown = {csv.data, roles, *grower, tree, sequence};
    WriteResults(grown);
    if (!options_.results.quiet) Print(grown);
    RequireWritten(console_.out);
  }

 private:
  void Remark(std::vector<std::string> const& remarks) const {
    for (std::string const& remark : remarks) Say(console_, remark);
  }

  void StopIfInterrupted() const {
    if (console_.caughtSignal() != 0) throw Interrupted();
  }

  /// What is clear beforehand is said before the work.
  void CheckFiles() {
    ResultOptions const& results = options_.results;
    CheckFile("--predictions", results.predictions);
    CheckFile("--dot", results.dot);
    CheckFile("--svg", results.svg);
    if (results.svg.empty()) return;
    dot_ = FindDot();
    if (dot_.empty()) {
      throw OutputError("--svg: needs the program dot of Graphviz, which is not installed");
    }
  }

  void CheckFile(char const* option, std::string const& file) const {
    if (file.empty() || file == kStandard) return;
    std::error_code unknown;
    if (std::filesystem::equivalent(file, options_.file, unknown)) {
      throw OutputError(std::string(option) + ": " + file + ": is the file that is read");
    }
    For(option, [&file] { RequireWritable(file); });
  }

  grow::CsvData Read() {
    grow::CsvOptions csv = options_.csv;
    csv.listener = &progress_;
    progress_.Begin();
    std::optional<grow::CsvData> data = options_.file == kStandard
                                            ? grow::ReadCsv(console_.in, "standard input", csv)
                                            : grow::ReadCsv(options_.file, csv);
    progress_.End();
    if (!data.has_value()) throw Interrupted();
    return std::move(*data);
  }

  std::string FileName() const {
    return options_.file == kStandard ? "standard input" : options_.file;
  }

  /// The library knows neither the file nor that rows are counted from 1, as in predictions.
  std::unique_ptr<grow::Grower> MakeGrower(grow::DataSet const& data, grow::CaseRoles const& roles,
                                           AlgSettings const& settings) {
    grow::GrowOptions options = options_.grow;
    options.listener = &progress_;
    progress_.Begin();
    try {
      auto grower = grow::MakeGrower(data, roles, settings, options);
      progress_.End();
      if (grower == nullptr) throw Interrupted();
      return grower;
    } catch (grow::CaseError const& error) {
      throw grow::InputError(FileName() + ": row " + std::to_string(error.GetRow() + 1) + ": " +
                             error.GetWhere() + ": " + error.GetWhy());
    } catch (grow::InputError const& error) {
      std::string const message = error.what();
      if (!message.starts_with("column")) throw;
      throw grow::InputError(FileName() + ": " + message);
    }
  }

  /// Refuses samples without a case, before work is done that would be of no use.
  void CheckSamples(grow::Grower const& grower) const {
    bool const trains = grower.GetNumCases(TrainingSample) > 0;
    bool const tests = grower.GetNumCases(TestSample) > 0;
    if (!trains && !tests) return;  // all are left out, which growing says
    bool const needsTest =
        grower.GetSettings()->GetValidationSpec()->GetType() == ValidationSplitSample;
    if (!trains || (needsTest && !tests)) {
      std::string const sample = std::string(trains ? "test" : "training") + " sample";
      if (!options_.variables.sample.has_value()) {
        Refuse("--validation", "no case is drawn for the " + sample);
      }
      Refuse("--sample",
             "column " + Quoted(*options_.variables.sample) + " puts no case into the " + sample);
    }
    if (options_.gains.AreWanted() && options_.gains.sortSample == TestSample && !tests) {
      Refuse("--gains-by", "there is no test sample");
    }
  }

  void WritePredictions(std::ostream& out, Grown const& grown) {
    // A bar would be drawn into the lines where standard output goes to the same terminal.
    bool const isShown = options_.results.predictions != kStandard;
    ProgressBar silent(console_.err, 0, [this] { return console_.caughtSignal() != 0; });
    progress_.Begin();
    bool const isDone = WriteCases(out, *grown.grower.GetTree(), grown.data, grown.roles,
                                   options_.csv.delimiter, isShown ? progress_ : silent);
    progress_.End();
    if (!isDone) throw Interrupted();
  }

  void WriteResults(Grown const& grown) {
    ResultOptions const& wanted = options_.results;
    Result const results[] = {
        {"--predictions", wanted.predictions,
         [&](std::ostream& out) { WritePredictions(out, grown); }},
        {"--dot", wanted.dot, [&](std::ostream& out) { DrawTree(out, grown.tree); }},
        {"--svg", wanted.svg, [&](std::ostream& out) {
           std::ostringstream drawing;
           DrawTree(drawing, grown.tree);
           if (!drawing) throw std::bad_alloc();
           out << MakeSvg(dot_, drawing.str());
         }}};
    // All are written before the first takes its place.
    std::vector<std::pair<char const*, std::unique_ptr<WholeFile>>> files;
    for (auto const& [option, file, write] : results) {
      if (file.empty()) continue;
      For(option, [&, &name = file, &writeTo = write, &option = option] {
        if (name == kStandard) {
          writeTo(console_.out);
        } else {
          files.emplace_back(option, std::make_unique<WholeFile>(name));
          writeTo(files.back().second->GetStream());
          files.back().second->Finish();
        }
      });
      StopIfInterrupted();
    }
    for (auto const& [option, file] : files) {
      For(option, [&committed = *file] { committed.Commit(); });
    }
  }

  void Print(Grown const& grown) const {
    std::ostream& out = console_.out;
    PrintData(out, FileName(), grown.data, grown.roles, grown.grower.GetNumCases(TrainingSample),
              grown.grower.GetNumCases(TestSample));
    PrintTree(out, grown.tree);
    if (options_.results.details) {
      out << '\n';
      PrintDetails(out, grown.tree);
    }
    if (options_.results.sequence) {
      out << '\n';
      PrintSequence(out, grown.sequence, grown.grower.GetNumNodes(TerminalNodes));
    }
    if (options_.gains.AreWanted()) PrintAllGains(grown);
    out << '\n';
    PrintStatistics(out, grown.grower, grown.tree.GetNames().target.labels,
                    grown.grower.GetNumFolds());
  }

  /// The rows of both samples are in the same order.
  void PrintAllGains(Grown const& grown) const {
    for (DataSample const sample : {TrainingSample, TestSample}) {
      if (sample == TestSample && !grown.tree.HasTestSample()) continue;
      GainsSettings settings = gains_;
      settings.SetDataSample(sample);
      std::unique_ptr<GainsIntf const> const table(grown.grower.MakeGains(settings));
      if (table == nullptr) throw std::bad_alloc();
      std::string const& target = options_.gains.target;
      console_.out << "\nGains: " << (target.empty() ? "profit" : Shown(target))
                   << (sample == TestSample ? ", test sample\n" : ", training sample\n");
      PrintGains(console_.out, *table, options_.gains.rows == GainsRows::kCumulative);
    }
  }

  Options const& options_;
  Console const& console_;
  ProgressBar progress_;
  std::string dot_;  // the program that makes pictures
  GainsSettings gains_;
};

void ParseAndRun(std::vector<std::string> const& arguments, Console const& console) {
  ParsedArguments const parsed = ParseArguments(arguments);
  if (parsed.text.empty()) {
    Session(parsed.options, console).Run();
  } else {
    console.out << parsed.text;
    RequireWritten(console.out);
  }
}

/// As `Run`, but for want of memory, which nothing can be said about here.
int RunWithMemory(std::vector<std::string> const& arguments, Console const& console) {
  auto const fail = [&console](ExitStatus status, std::string const& message) {
    Say(console, message);
    return status;
  };
  try {
    ParseAndRun(arguments, console);
    return ExitDone;
  } catch (Interrupted const&) {
    return ExitSignalled + console.caughtSignal();
  } catch (UsageError const& error) {
    return fail(ExitUsage, std::string(error.what()) + " (growtree --help says more)");
  } catch (grow::InputError const& error) {
    return fail(ExitBadInput, error.what());
  } catch (OutputError const& error) {
    // A picture is not made when the signal reaches the program that makes it, too.
    if (console.caughtSignal() != 0) return ExitSignalled + console.caughtSignal();
    return fail(ExitBadInput, error.what());
  } catch (std::bad_alloc const&) {
    throw;
  } catch (std::exception const& error) {
    return fail(ExitNotGrown, error.what());
  }
}

}  // namespace

int Run(std::vector<std::string> const& arguments, Console const& console) {
  try {
    return RunWithMemory(arguments, console);
  } catch (std::bad_alloc const&) {
    console.err << "growtree: there is not enough memory\n";
    return ExitNotGrown;
  }
}

}  // namespace tree::cli
