// words: recognises isolated words by what it has heard before.  The usage text below says the rest.
#include <charconv>
#include <cstdio>
#include <iomanip>
#include <iostream>
#include <set>
#include <span>
#include <string_view>

#include "common/output_file.h"
#include "corpus.h"
#include "draw.h"
#include "evaluate.h"
#include "learn.h"
#include "listen.h"
#include "noise_evaluation.h"

namespace {

using namespace words;

constexpr std::string_view kUsage =
    R"(usage: words train DIR -o MODEL            learn the words of the recordings in a folder
       words recognise MODEL FILE...       say which word each recording holds
       words evaluate DIR [CHOICE]         learn from some of the recordings, recognise the others, count
       words adapt MODEL FILE... -o MODEL  teach a model one speaker by a few labelled recordings
       words listen MODEL [FILE]           words in a long recording, or live from standard input
       words mix DIR -o DIR2 --noise KIND  the recordings of a folder in noise
       words show FILE -o PICTURE          draw waveform, spectra and cepstra (PICTURE: .png or .svg)

Recordings are any audio files that libsndfile reads, of one sample rate, named WORD_SPEAKER_INDEX.wav or the like.

train and evaluate learn hidden Markov models of the words, also as they sound in noise; with --clean only as they were
recorded.  --front-end chooses what they look at: mfcc, mfcc-mean (without the cepstra's means), mel (three kinds of
spectra), aurora (the standard features of speech recognition in noise), or combined, which is best and the default:
aurora and three kinds of spectra of the waveform that the Aurora front end has cleaned.  With --templates they keep the
recordings and compare by time warping.

evaluate leaves out each speaker in turn and recognises that speaker from the others, unless CHOICE is
  --leave-speaker NAME   recognise the recordings of this speaker only
  --test-index A-B       recognise the recordings with an index from A to B, learn from the rest
  --adapt N              adapt to each speaker left out by N recordings first, recognise the speaker's others
and with --noise tests in noise: a line for each kind and level, with the percentage, its confidence interval, counts;
  --draws N   of noise, for every recording          --every N   one recording of so many
With --trim energy, detector or none templates cut the silence around words off by level, by voice activity, or not.

listen tells each word when it is over, with its time, and nothing for what is no word of the model.  Without a file, or
with -, it takes 16-bit samples of the model's rate: arecord -t raw -f S16_LE -r 8000 | words listen MODEL -

mix takes white, car, speech or babble, --snr DB (default 10), --draw N and --every N.

Exit status: 0 if all is well, 1 if something failed (files that fail are reported, the others still processed),
2 if the command line is wrong.
)";

constexpr int kFailure = 1;
constexpr int kUsageError = 2;

struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

void complain(const std::string& message) {
    std::cerr << "words: " << message << '\n';
}

// What follows the command's name: options that take a value, and the rest.
class Arguments {
  public:
    Arguments(std::span<char*> arguments, const std::set<std::string_view>& options,
              const std::set<std::string_view>& flags = {}) {
        bool optionsEnded = false;
        for (std::size_t i = 0; i < arguments.size(); ++i) {
            const std::string_view argument = arguments[i];
            if (optionsEnded || argument.size() < 2 || argument[0] != '-') {
                operands_.emplace_back(argument);
            } else if (argument == "--") {
                optionsEnded = true;
            } else if (flags.contains(argument)) {
                if (!flags_.insert(argument).second)
                    throw UsageError("the option " + std::string(argument) + " is given twice");
            } else if (!options.contains(argument)) {
                throw UsageError("unknown option " + std::string(argument));
            } else if (i + 1 == arguments.size()) {
                throw UsageError("the option " + std::string(argument) + " needs a value");
            } else if (!values_.emplace(argument, arguments[i + 1]).second) {
                throw UsageError("the option " + std::string(argument) + " is given twice");
            } else {
                ++i;
            }
        }
    }

    std::optional<std::string> option(std::string_view name) const {
        const auto value = values_.find(name);
        return value == values_.end() ? std::nullopt : std::optional(value->second);
    }
    std::string requiredOption(std::string_view name) const {
        if (const auto value = option(name)) return *value;
        throw UsageError("the option " + std::string(name) + " is missing");
    }
    bool flag(std::string_view name) const { return flags_.contains(name); }
    const std::vector<std::string>& operands() const { return operands_; }
    const std::string& onlyOperand(std::string_view what) const {
        if (operands_.size() != 1) throw UsageError("exactly one " + std::string(what) + " is needed");
        return operands_[0];
    }

  private:
    std::map<std::string_view, std::string> values_;
    std::set<std::string_view> flags_;
    std::vector<std::string> operands_;
};

std::pair<int, int> parseRange(const std::string& text) {
    const char* const end = text.data() + text.size();
    int first = 0;
    int last = 0;
    auto result = std::from_chars(text.data(), end, first);
    last = first;
    if (result.ec == std::errc() && result.ptr != end && *result.ptr == '-')
        result = std::from_chars(result.ptr + 1, end, last);
    if (result.ec != std::errc() || result.ptr != end || first < 0 || last < first)
        throw UsageError("\"" + text + "\" is not a range of indices such as 0-4");
    return {first, last};
}

// Reports what could not be used; throws if nothing is left.
int reportComplaints(const Corpus& corpus, const std::string& folder) {
    for (const auto& complaint : corpus.complaints) complain(complaint);
    if (corpus.utterances.empty()) throw std::runtime_error(folder + ": holds no usable recordings");
    return corpus.complaints.empty() ? 0 : kFailure;
}

// A whole number of at least `least`.
int numberOption(const Arguments& arguments, std::string_view name, int standard, int least) {
    const auto text = arguments.option(name);
    if (!text) return standard;
    int value = 0;
    const auto [end, error] = std::from_chars(text->data(), text->data() + text->size(), value);
    if (error != std::errc() || end != text->data() + text->size() || value < least)
        throw UsageError("the option " + std::string(name) + " does not take \"" + *text + "\"");
    return value;
}

Choice choiceOf(const Arguments& arguments) {
    Choice choice;
    if (arguments.flag("--templates")) choice.kind = kTemplatesKind;
    choice.inNoise = !arguments.flag("--clean");
    if (const auto name = arguments.option("--front-end")) {
        if (std::find(std::begin(kFrontEndNames), std::end(kFrontEndNames), *name) == std::end(kFrontEndNames))
            throw UsageError("there is no front end \"" + *name + "\"");
        choice.frontEnd = *name;
    }
    return choice;
}

int train(const Arguments& arguments) {
    Team alone;
    return learn(choiceOf(arguments), arguments.onlyOperand("folder"), arguments.requiredOption("-o"), alone, std::cout)
               ? 0
               : kFailure;
}

int recognise(const Arguments& arguments) {
    if (arguments.operands().size() < 2) throw UsageError("a model and at least one recording are needed");
    const Model model = loadModel(arguments.operands()[0]);
    int status = 0;
    for (const auto& file : std::span(arguments.operands()).subspan(1)) {
        try {
            const Recording recording = readRecording(file);
            std::vector<Candidate> candidates;
            try {
                candidates = model.recogniser->recognise(analyse(recording, model.frontEnds)).candidates;
            } catch (const std::runtime_error& error) {
                throw std::runtime_error(file + ": " + error.what());
            }
            std::cout << file << ": " << candidates[0].word << std::fixed << std::setprecision(2) << "  (cost "
                      << candidates[0].cost;
            if (candidates.size() > 1) std::cout << ", next " << candidates[1].word << ' ' << candidates[1].cost;
            std::cout << ")\n";
        } catch (const std::runtime_error& error) {
            complain(error.what());
            status = kFailure;
        }
    }
    return status;
}

int adapt(const Arguments& arguments) {
    const auto& operands = arguments.operands();
    if (operands.size() < 2) throw UsageError("a model and at least one recording are needed");
    const std::string target = arguments.requiredOption("-o");
    Model model = loadModel(operands[0]);
    std::vector<LabelledFile> files;
    for (const auto& file : std::span(operands).subspan(1)) {
        common::refuseToOverwrite(file, target);
        files.push_back({file, labelOf(file)});
    }
    Team alone;
    const Analyses analyses{model.recogniser->frontEnds(), model.recogniser->variants()};
    const Corpus corpus = loadCorpus(std::move(files), analyses, alone);
    const int status = reportComplaints(corpus, "the list of files");
    const int rate = model.frontEnds.front().rate();
    if (corpus.rate != rate)
        throw std::runtime_error("the recordings are sampled at " + std::to_string(corpus.rate) +
                                 " Hz, the model's at " + std::to_string(rate) + " Hz");
    std::vector<Example> examples;
    for (const auto& utterance : corpus.utterances) examples.push_back(utterance.example);
    model.recogniser->adapt(examples);
    saveModel(model, target);
    std::cout << target << ": adapted by " << examples.size() << " recordings\n";
    return status;
}

Trim parseTrim(const std::string& text) {
    for (const auto& [name, trim] :
         {std::pair("energy", Trim::energy), {"detector", Trim::detector}, {"none", Trim::none}})
        if (text == name) return trim;
    throw UsageError("\"" + text + "\" is none of energy, detector and none");
}

int evaluate(const Arguments& arguments) {
    const std::string& folder = arguments.onlyOperand("folder");
    Split split;
    split.speaker = arguments.option("--leave-speaker");
    if (const auto range = arguments.option("--test-index")) split.testIndex = parseRange(*range);
    split.adapt = numberOption(arguments, "--adapt", 0, 1);
    if (split.adapt > 0 && split.testIndex) throw UsageError("--adapt and --test-index exclude each other");
    if (split.speaker && split.testIndex) throw UsageError("--leave-speaker and --test-index exclude each other");
    std::optional<Trim> trim;
    if (const auto how = arguments.option("--trim")) trim = parseTrim(*how);
    Team alone;
    const Choice choice = choiceOf(arguments);
    const NoiseTest noiseTest{numberOption(arguments, "--draws", 1, 1), numberOption(arguments, "--every", 1, 1)};
    const Corpus corpus = loadCorpusFor(choice, folder, alone, trim);
    const int status = reportComplaints(corpus, folder);
    if (arguments.flag("--noise")) {
        evaluateInNoise(corpus, split, choice, noiseTest, std::cout);
        return status;
    }
    const Evaluation evaluation(corpus, split, choice);
    std::cout << corpus.utterances.size() << " recordings from " << folder << '\n';
    evaluation.print(std::cout);
    return status;
}

int listenTo(const Arguments& arguments) {
    const auto& operands = arguments.operands();
    if (operands.empty() || operands.size() > 2) throw UsageError("a model and at most one file are needed");
    listen(loadModel(operands[0]), operands.size() == 2 ? operands[1] : "-", std::cout);
    return 0;
}

int mix(const Arguments& arguments) {
    const std::string& folder = arguments.onlyOperand("folder");
    Surroundings surroundings;
    const std::string kind = arguments.requiredOption("--noise");
    for (const NoiseKind one : kNoiseKinds)
        if (nameOf(one) == kind) surroundings.kind = one;
    if (surroundings.kind == NoiseKind::none && kind != "none")
        throw UsageError("\"" + kind + "\" is none of none, white, car, speech and babble");
    surroundings.snrDb = static_cast<float>(numberOption(arguments, "--snr", 10, -100));
    surroundings.draw = static_cast<unsigned>(numberOption(arguments, "--draw", 0, 0));
    const int every = numberOption(arguments, "--every", 1, 1);
    const std::string target = arguments.requiredOption("-o");
    Team alone;
    Choice simple;
    simple.kind = kTemplatesKind;
    const Corpus corpus = loadCorpusFor(simple, folder, alone);
    const int status = reportComplaints(corpus, folder);
    writeNoisy(corpus, surroundings, every, target);
    return status;
}

int show(const Arguments& arguments) {
    const std::string& file = arguments.onlyOperand("recording");
    const std::string picture = arguments.requiredOption("-o");
    if (!canDraw(picture)) throw UsageError("the picture's name must end in .png or .svg");
    common::refuseToOverwrite(file, picture);
    const Recording recording = readRecording(file);
    try {
        const FrontEnd frontEnd(recording.rate);
        drawAnalysis(picture, std::filesystem::path(file).filename().string(), recording, frontEnd,
                     frontEnd.analyse(recording));
    } catch (const UnwritablePicture&) {
        throw;
    } catch (const std::runtime_error& error) {
        throw std::runtime_error(file + ": " + error.what());
    }
    return 0;
}

int run(std::span<char*> arguments) {
    for (const std::string_view argument : arguments) {
        if (argument == "--") break;
        if (argument == "--help" || argument == "-h") {
            std::cout << kUsage;
            return 0;
        }
    }
    if (arguments.empty()) throw UsageError("a command is missing");
    const std::string_view command = arguments[0];
    const auto rest = arguments.subspan(1);
    if (command == "train") return train({rest, {"-o", "--front-end"}, {"--templates", "--clean"}});
    if (command == "recognise") return recognise({rest, {}});
    if (command == "adapt") return adapt({rest, {"-o"}});
    if (command == "listen") return listenTo({rest, {}});
    if (command == "mix") return mix({rest, {"-o", "--noise", "--snr", "--draw", "--every"}});
    if (command == "evaluate")
        return evaluate({rest,
                         {"--leave-speaker", "--test-index", "--adapt", "--trim", "--front-end", "--draws", "--every"},
                         {"--templates", "--clean", "--noise"}});
    if (command == "show") return show({rest, {"-o"}});
    throw UsageError("unknown command " + std::string(command));
}

}  // namespace

int main(int argc, char** argv) {
    try {
        const int status = run(std::span(argv, static_cast<std::size_t>(argc)).subspan(argc > 0 ? 1 : 0));
        std::cout.flush();
        if (!std::cout) throw std::runtime_error("standard output cannot be written");
        return status;
    } catch (const UsageError& error) {
        complain(error.what());
        std::cerr << '\n' << kUsage;
        return kUsageError;
    } catch (const std::bad_alloc&) {
        complain("out of memory");
    } catch (const std::exception& error) {
        complain(error.what());
    }
    return kFailure;
}
