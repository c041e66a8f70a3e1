#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

// The learned reader of references: a linear-chain labeller (an averaged
// perceptron decoded with Viterbi) that labels each token of an entry written
// in any citation style with the field it belongs to.
namespace quillreader {

enum class Label : uint8_t {
  Other,
  Author,
  Editor,
  Date,
  Title,
  Container,
  Volume,
  Issue,
  Pages,
  Publisher,
  Place,
  Edition,
  Doi,
  Url,
  Genre,
  Note,
};
constexpr size_t kLabels = 16;

// "author", "container", ...: the names the training data and JSON use.
std::string_view labelName(Label label);
// The label of a name, or Other for a name it does not know.
Label labelNamed(std::string_view name);

// Whether `word`, in any case, is a common given name ("Joseph", "María"):
// one of the word lists the reader's features know.
bool isGivenName(std::string_view word);

// A token: bytes [begin, end) of the entry. An address or DOI is one token,
// a run of digits another, a word (with inner apostrophes and hyphens)
// another, any other character one of its own.
struct Token {
  size_t begin = 0;
  size_t end = 0;
};
std::vector<Token> tokenize(std::string_view text);

// An entry's tokens with their labels, and how sure the reader is: the mean
// of the three smallest margins by which a token's label beat the next best
// over whole label sequences (its max-marginal's lead; 0 without tokens).
struct Reading {
  std::vector<Token> tokens;
  std::vector<Label> labels;
  double confidence = 0;
  // The text of every span labelled `label`, in order ("Kernis, M. H." ...).
  std::vector<std::string> spans(std::string_view entry, Label label) const;
};

// The best label sequence for each token's label scores and the label to
// label transitions (the last row: from the start), in which the title, the
// container, the volume, the pages, the publisher and the place each make one
// stretch at most.
std::vector<Label> decode(const std::vector<std::array<float, kLabels>>& emissions,
                          const std::array<std::array<float, kLabels>, kLabels + 1>& transitions);

// One training example: an entry and the label of each of its tokens.
struct Example {
  std::string text;
  std::vector<Token> tokens;
  std::vector<Label> labels;
};

// A model file that cannot be used: missing, cut short, of another version.
class ModelError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class Model {
 public:
  // Hashed feature buckets: weights are kept per bucket and label.
  static constexpr size_t kBuckets = size_t{1} << 16;

  Model();
  // Reads a model written by save(); throws ModelError saying what is wrong.
  static Model load(const std::filesystem::path& path);
  void save(const std::filesystem::path& path) const;

  // Trains on `examples` for `epochs` passes in an order fixed by `seed`:
  // the same examples and seed give the same model, byte for byte.
  static Model train(const std::vector<Example>& examples, int epochs, uint64_t seed);

  Reading read(std::string_view entry) const;
  Reading read(std::string_view entry, const std::vector<Token>& tokens) const;

 private:
  using Scores = std::array<float, kLabels>;
  // The scores of each label for each token, from the token's features.
  std::vector<Scores> emissions(std::string_view entry, const std::vector<Token>& tokens) const;

  std::vector<Scores> weights_;                 // kBuckets rows
  std::array<Scores, kLabels + 1> transitions_{};  // from label (kLabels: the start) to label
};

}  // namespace quillreader
