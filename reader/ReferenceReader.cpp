#include "reader/ReferenceReader.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <numeric>
#include <random>

#include "reader/Features.h"

namespace quillreader {

namespace {

constexpr std::string_view kNames[kLabels] = {"other",     "author", "editor",  "date",      "title", "container",
                                              "volume",    "issue",  "pages",   "publisher", "place", "edition",
                                              "doi",       "url",    "genre",   "note"};

constexpr std::string_view kMagic = "QFAREADER1\n";

// FNV-1a over bytes: the model file's checksum.
uint64_t checksum(const char* data, size_t size) {
  uint64_t h = 1469598103934665603ull;
  for (size_t i = 0; i < size; ++i) h = (h ^ static_cast<unsigned char>(data[i])) * 1099511628211ull;
  return h;
}

template <class T>
void put(std::string& out, T value) {
  out.append(reinterpret_cast<const char*>(&value), sizeof value);
}

template <class T>
T take(std::string_view& in) {
  if (in.size() < sizeof(T)) throw ModelError("the model file is cut short");
  T value;
  std::copy_n(in.data(), sizeof value, reinterpret_cast<char*>(&value));
  in.remove_prefix(sizeof value);
  return value;
}

}  // namespace

std::string_view labelName(Label label) { return kNames[static_cast<size_t>(label)]; }

Label labelNamed(std::string_view name) {
  for (size_t i = 0; i < kLabels; ++i)
    if (kNames[i] == name) return static_cast<Label>(i);
  return Label::Other;
}

std::vector<std::string> Reading::spans(std::string_view entry, Label label) const {
  std::vector<std::string> out;
  for (size_t i = 0; i < tokens.size(); ++i) {
    if (labels[i] != label) continue;
    size_t j = i;
    while (j + 1 < tokens.size() && labels[j + 1] == label) ++j;
    out.emplace_back(entry.substr(tokens[i].begin, tokens[j].end - tokens[i].begin));
    i = j;
  }
  return out;
}

Model::Model() : weights_(kBuckets, Scores{}) {}

std::vector<Model::Scores> Model::emissions(std::string_view entry, const std::vector<Token>& tokens) const {
  std::vector<Scores> out(tokens.size(), Scores{});
  const std::vector<std::vector<uint32_t>> features = tokenFeatures(entry, tokens, kBuckets);
  for (size_t i = 0; i < tokens.size(); ++i)
    for (uint32_t f : features[i]) {
      const Scores& w = weights_[f];
      for (size_t l = 0; l < kLabels; ++l) out[i][l] += w[l];
    }
  return out;
}

namespace {

using Emissions = std::vector<std::array<float, kLabels>>;
using Transitions = std::array<std::array<float, kLabels>, kLabels + 1>;
constexpr size_t kNone = SIZE_MAX;

// The labels a reference holds one stretch of: one title, one container,
// one publisher and place, one volume, one page range.
constexpr std::array<Label, 6> kOneSpan = {Label::Title, Label::Container, Label::Volume,
                                           Label::Pages, Label::Publisher, Label::Place};

size_t oneSpanBit(size_t label) {
  for (size_t k = 0; k < kOneSpan.size(); ++k)
    if (static_cast<size_t>(kOneSpan[k]) == label) return size_t{1} << k;
  return 0;
}
const size_t kTitleBit = oneSpanBit(static_cast<size_t>(Label::Title));

// The two spaces of label sequences the decoder searches. A state is a row
// (the set of labels held to one stretch that have begun, as bits) and a
// label: state = row * kLabels + label.
// Any label after any other: one row, no label held to one stretch.
struct AnySequence {
  static constexpr size_t kStates = kLabels;
  static size_t bit(size_t) { return 0; }
  static bool end(size_t) { return true; }
};

// Sequences with a title, in which each kOneSpan label makes one stretch at most.
struct OneStretchEach {
  static constexpr size_t kStates = (size_t{1} << kOneSpan.size()) * kLabels;
  static size_t bit(size_t l) { return oneSpanBit(l); }
  static bool end(size_t state) { return (state / kLabels) & kTitleBit; }
};

// The best scores of the sequences of a state space that reach each state at
// each token (forward) and go on from it to the end (backward): together, the
// best sequence and each label's max-marginal. A state is a set of labels
// begun (a row) and a label; the steps out of one row to one label are taken
// together, as a max-plus product of the row with the token's label-to-label
// scores, and a row no sequence reaches is passed over whole.
template <class Space>
class Lattice {
 public:
  static constexpr size_t kRows = Space::kStates / kLabels;
  using Arcs = std::array<std::array<float, kLabels>, kLabels>;  // [from label][to label]

  Lattice(const Emissions& emit, const Transitions& trans)
      : emit_(emit),
        trans_(trans),
        forward_(emit.size() * Space::kStates, -INFINITY),
        backward_(emit.size() * Space::kStates, -INFINITY) {
    const size_t n = emit.size();
    if (n == 0) return;
    std::array<size_t, kLabels> bits;
    for (size_t l = 0; l < kLabels; ++l) bits[l] = Space::bit(l);
    for (size_t l = 0; l < kLabels; ++l) forward(0)[start(l)] = trans[kLabels][l] + emit[0][l];
    Arcs arc;
    for (size_t i = 1; i < n; ++i) {
      arcsAt(i, arc);
      const float* before = forward(i - 1);
      float* now = forward(i);
      for (size_t row = 0; row < kRows; ++row) {
        const float* from = before + row * kLabels;
        std::array<float, kLabels> best;
        best.fill(-INFINITY);
        bool reached = false;
        for (size_t lf = 0; lf < kLabels; ++lf) {
          if (from[lf] == -INFINITY) continue;
          reached = true;
          for (size_t l = 0; l < kLabels; ++l) best[l] = std::max(best[l], from[lf] + arc[lf][l]);
        }
        if (!reached) continue;
        for (size_t l = 0; l < kLabels; ++l) {
          // A label whose stretch is over goes on only from itself.
          const bool begun = bits[l] & row;
          const size_t to = begun ? row * kLabels + l : (row | bits[l]) * kLabels + l;
          now[to] = std::max(now[to], begun ? from[l] + arc[l][l] : best[l]);
        }
      }
    }
    for (size_t s = 0; s < Space::kStates; ++s)
      if (Space::end(s)) backward(n - 1)[s] = 0;
    for (size_t i = n - 1; i-- > 0;) {
      arcsAt(i + 1, arc);
      const float* after = backward(i + 1);
      float* now = backward(i);
      for (size_t row = 0; row < kRows; ++row) {
        std::array<float, kLabels> next;  // the best on from each label taken anew
        for (size_t l = 0; l < kLabels; ++l)
          next[l] = (bits[l] & row) ? -INFINITY : after[(row | bits[l]) * kLabels + l];
        for (size_t lf = 0; lf < kLabels; ++lf) {
          float best = -INFINITY;
          for (size_t l = 0; l < kLabels; ++l) best = std::max(best, arc[lf][l] + next[l]);
          if (bits[lf] & row) best = std::max(best, arc[lf][lf] + after[row * kLabels + lf]);
          now[row * kLabels + lf] = best;
        }
      }
    }
  }

  // The best sequence's labels: the best first state, then at each token the
  // step that keeps the best score.
  std::vector<size_t> path() const {
    const size_t n = emit_.size();
    std::vector<size_t> out;
    if (n == 0) return out;
    size_t state = 0;
    for (size_t s = 1; s < Space::kStates; ++s)
      if (forward(0)[s] + backward(0)[s] > forward(0)[state] + backward(0)[state]) state = s;
    out.push_back(label(state));
    for (size_t i = 1; i < n; ++i) {
      size_t next = kNone;
      float top = -INFINITY;
      for (size_t l = 0; l < kLabels; ++l)
        if (const size_t to = follow(state, l); to != kNone) {
          const float score = arc(i, state, l) + backward(i)[to];
          if (score > top) top = score, next = to;
        }
      if (next == kNone) break;  // no sequence of the space fits (none has a title): the best so far
      state = next;
      out.push_back(label(state));
    }
    return out;
  }

  // For each token, how far the best sequence with its label in `path` is
  // ahead of the best with any other label there.
  std::vector<double> margins(const std::vector<size_t>& path) const {
    std::vector<double> out;
    for (size_t i = 0; i < path.size(); ++i) {
      std::array<float, kLabels> best;
      best.fill(-INFINITY);
      for (size_t s = 0; s < Space::kStates; ++s)
        best[label(s)] = std::max(best[label(s)], forward(i)[s] + backward(i)[s]);
      float other = -INFINITY;
      for (size_t l = 0; l < kLabels; ++l)
        if (l != path[i]) other = std::max(other, best[l]);
      out.push_back(static_cast<double>(best[path[i]] - other));
    }
    return out;
  }

 private:
  static size_t label(size_t state) { return state % kLabels; }
  static size_t start(size_t l) { return Space::bit(l) * kLabels + l; }
  // The state after `from` on label `l`, or kNone: a label whose stretch is
  // over goes on only from itself.
  static size_t follow(size_t from, size_t l) {
    const size_t row = from / kLabels, b = Space::bit(l);
    if (l != label(from) && (row & b)) return kNone;
    return (row | b) * kLabels + l;
  }
  // The score of taking label `l` at token `i` from state `from`.
  float arc(size_t i, size_t from, size_t l) const { return trans_[label(from)][l] + emit_[i][l]; }
  void arcsAt(size_t i, Arcs& out) const {
    for (size_t lf = 0; lf < kLabels; ++lf)
      for (size_t l = 0; l < kLabels; ++l) out[lf][l] = trans_[lf][l] + emit_[i][l];
  }
  float* forward(size_t i) { return &forward_[i * Space::kStates]; }
  const float* forward(size_t i) const { return &forward_[i * Space::kStates]; }
  float* backward(size_t i) { return &backward_[i * Space::kStates]; }
  const float* backward(size_t i) const { return &backward_[i * Space::kStates]; }

  const Emissions& emit_;
  const Transitions& trans_;
  std::vector<float> forward_, backward_;
};

// Whether a sequence has a title and makes one stretch of each kOneSpan label.
bool wellFormed(const std::vector<size_t>& path) {
  size_t begun = 0;
  for (size_t i = 0; i < path.size(); ++i) {
    if (i > 0 && path[i] == path[i - 1]) continue;
    const size_t bit = oneSpanBit(path[i]);
    if (begun & bit) return false;
    begun |= bit;
  }
  return path.empty() || (begun & kTitleBit);
}

// The best reading and its margins: over any sequence, then, if that has no
// title or splits a label that makes one stretch (a tenth of the entries,
// so the cost stays small), over the sequences that do not.
std::pair<std::vector<size_t>, std::vector<double>> bestReading(const Emissions& emit, const Transitions& trans) {
  const Lattice<AnySequence> any(emit, trans);
  std::vector<size_t> path = any.path();
  if (wellFormed(path)) return {path, any.margins(path)};
  const Lattice<OneStretchEach> constrained(emit, trans);
  path = constrained.path();
  return {path, constrained.margins(path)};
}

}  // namespace

std::vector<Label> decode(const std::vector<std::array<float, kLabels>>& emissions,
                          const std::array<std::array<float, kLabels>, kLabels + 1>& transitions) {
  std::vector<Label> out;
  for (size_t label : bestReading(emissions, transitions).first) out.push_back(static_cast<Label>(label));
  return out;
}

Reading Model::read(std::string_view entry) const { return read(entry, tokenize(entry)); }

Reading Model::read(std::string_view entry, const std::vector<Token>& tokens) const {
  Reading r;
  r.tokens = tokens;
  const std::vector<Scores> emit = emissions(entry, tokens);
  auto [path, margins] = bestReading(emit, transitions_);
  for (size_t label : path) r.labels.push_back(static_cast<Label>(label));
  if (path.empty()) return r;
  // The weakest decisions tell how sure the reading is: the mean of the three
  // smallest margins (of all, when there are fewer).
  std::sort(margins.begin(), margins.end());
  const size_t weakest = std::min<size_t>(3, margins.size());
  double sum = 0;
  for (size_t k = 0; k < weakest; ++k) sum += margins[k];
  r.confidence = sum / static_cast<double>(weakest);
  return r;
}

Model Model::train(const std::vector<Example>& examples, int epochs, uint64_t seed) {
  // The averaged perceptron: `sums` collects every update times the step it
  // was made at, so that the average is weights - sums / steps.
  Model model;
  using Sums = std::array<double, kLabels>;
  std::vector<Sums> sums(kBuckets, Sums{});
  std::array<Sums, kLabels + 1> transitionSums{};
  std::vector<std::vector<std::vector<uint32_t>>> features;
  features.reserve(examples.size());
  for (const Example& e : examples) features.push_back(tokenFeatures(e.text, e.tokens, kBuckets));

  std::vector<size_t> order(examples.size());
  std::iota(order.begin(), order.end(), 0);
  std::mt19937_64 shuffle(seed);
  double step = 1;
  for (int epoch = 0; epoch < epochs; ++epoch) {
    std::shuffle(order.begin(), order.end(), shuffle);
    for (size_t k : order) {
      const Example& e = examples[k];
      const std::vector<std::vector<uint32_t>>& f = features[k];
      std::vector<Scores> emit(e.tokens.size(), Scores{});
      for (size_t i = 0; i < e.tokens.size(); ++i)
        for (uint32_t b : f[i])
          for (size_t l = 0; l < kLabels; ++l) emit[i][l] += model.weights_[b][l];
      const std::vector<size_t> guess = Lattice<AnySequence>(emit, model.transitions_).path();
      for (size_t i = 0; i < guess.size(); ++i) {
        const size_t gold = static_cast<size_t>(e.labels[i]);
        const size_t from = i == 0 ? kLabels : static_cast<size_t>(e.labels[i - 1]);
        const size_t guessFrom = i == 0 ? kLabels : guess[i - 1];
        if (gold != guess[i]) {
          for (uint32_t b : f[i]) {
            model.weights_[b][gold] += 1;
            model.weights_[b][guess[i]] -= 1;
            sums[b][gold] += step;
            sums[b][guess[i]] -= step;
          }
        }
        if (gold != guess[i] || from != guessFrom) {
          model.transitions_[from][gold] += 1;
          model.transitions_[guessFrom][guess[i]] -= 1;
          transitionSums[from][gold] += step;
          transitionSums[guessFrom][guess[i]] -= step;
        }
      }
      ++step;
    }
  }
  for (size_t b = 0; b < kBuckets; ++b)
    for (size_t l = 0; l < kLabels; ++l) model.weights_[b][l] -= static_cast<float>(sums[b][l] / step);
  for (size_t p = 0; p <= kLabels; ++p)
    for (size_t l = 0; l < kLabels; ++l) model.transitions_[p][l] -= static_cast<float>(transitionSums[p][l] / step);
  return model;
}

void Model::save(const std::filesystem::path& path) const {
  // Weights are kept as 16-bit integers of a common scale: the file stays small.
  float largest = 0;
  for (const Scores& s : weights_)
    for (float w : s) largest = std::max(largest, std::abs(w));
  const float scale = largest > 0 ? largest / 32767.0f : 1.0f;
  std::string body;
  put(body, static_cast<uint32_t>(kBuckets));
  put(body, static_cast<uint32_t>(kLabels));
  put(body, scale);
  for (const Scores& s : weights_)
    for (float w : s) put(body, static_cast<int16_t>(std::lround(w / scale)));
  for (const Scores& s : transitions_)
    for (float w : s) put(body, w);
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(kMagic.data(), static_cast<std::streamsize>(kMagic.size()));
  out.write(body.data(), static_cast<std::streamsize>(body.size()));
  const uint64_t sum = checksum(body.data(), body.size());
  out.write(reinterpret_cast<const char*>(&sum), sizeof sum);
  if (!out.flush()) throw ModelError("cannot write the model to " + path.string());
}

Model Model::load(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) throw ModelError("the reader's model " + path.string() + " cannot be opened");
  std::string bytes;
  char block[1 << 16];
  while (in.read(block, sizeof block) || in.gcount() > 0) bytes.append(block, static_cast<size_t>(in.gcount()));
  std::string_view data(bytes);
  if (!data.starts_with(kMagic)) throw ModelError(path.string() + " is not a model of the reference reader");
  data.remove_prefix(kMagic.size());
  if (data.size() < sizeof(uint64_t)) throw ModelError("the model file " + path.string() + " is cut short");
  const std::string_view body = data.substr(0, data.size() - sizeof(uint64_t));
  std::string_view tail = data.substr(body.size());
  if (take<uint64_t>(tail) != checksum(body.data(), body.size()))
    throw ModelError("the model file " + path.string() + " is damaged (its checksum does not match)");
  std::string_view in2 = body;
  if (take<uint32_t>(in2) != kBuckets || take<uint32_t>(in2) != kLabels)
    throw ModelError("the model file " + path.string() + " was made for another version of the reader");
  const float scale = take<float>(in2);
  Model model;
  // The weights in one block: a million of them, read as one.
  const size_t count = kBuckets * kLabels;
  if (in2.size() < count * sizeof(int16_t)) throw ModelError("the model file " + path.string() + " is cut short");
  std::vector<int16_t> stored(count);
  std::copy_n(in2.data(), count * sizeof(int16_t), reinterpret_cast<char*>(stored.data()));
  in2.remove_prefix(count * sizeof(int16_t));
  for (size_t b = 0; b < kBuckets; ++b)
    for (size_t l = 0; l < kLabels; ++l) model.weights_[b][l] = static_cast<float>(stored[b * kLabels + l]) * scale;
  for (Scores& s : model.transitions_)
    for (float& w : s) w = take<float>(in2);
  if (!in2.empty()) throw ModelError("the model file " + path.string() + " has bytes after its end");
  return model;
}

}  // namespace quillreader
