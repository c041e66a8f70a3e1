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

// The best label sequence for the emissions under the transitions.
template <class Transitions>
std::vector<size_t> viterbi(const std::vector<std::array<float, kLabels>>& emit, const Transitions& trans) {
  const size_t n = emit.size();
  std::vector<size_t> path(n);
  if (n == 0) return path;
  std::vector<std::array<float, kLabels>> best(n);
  std::vector<std::array<uint8_t, kLabels>> back(n);
  for (size_t l = 0; l < kLabels; ++l) best[0][l] = trans[kLabels][l] + emit[0][l];
  for (size_t i = 1; i < n; ++i)
    for (size_t l = 0; l < kLabels; ++l) {
      float top = -INFINITY;
      uint8_t arg = 0;
      for (size_t p = 0; p < kLabels; ++p) {
        const float s = best[i - 1][p] + trans[p][l];
        if (s > top) {
          top = s;
          arg = static_cast<uint8_t>(p);
        }
      }
      best[i][l] = top + emit[i][l];
      back[i][l] = arg;
    }
  path[n - 1] = static_cast<size_t>(std::max_element(best[n - 1].begin(), best[n - 1].end()) - best[n - 1].begin());
  for (size_t i = n - 1; i > 0; --i) path[i - 1] = back[i][path[i]];
  return path;
}

// The labels a reference holds one stretch of: one title, one container,
// one publisher and place, one volume, one page range.
constexpr std::array<Label, 6> kOneSpan = {Label::Title, Label::Container, Label::Volume,
                                           Label::Pages, Label::Publisher, Label::Place};

int oneSpanBit(size_t label) {
  for (size_t k = 0; k < kOneSpan.size(); ++k)
    if (static_cast<size_t>(kOneSpan[k]) == label) return 1 << k;
  return 0;
}

bool oneSpanEach(const std::vector<size_t>& path) {
  int seen = 0;
  for (size_t i = 0; i < path.size(); ++i) {
    if (i > 0 && path[i] == path[i - 1]) continue;
    const int bit = oneSpanBit(path[i]);
    if (seen & bit) return false;
    seen |= bit;
  }
  return true;
}

// The best label sequence in which each of kOneSpan's labels makes one
// stretch at most: Viterbi over (the labels begun so far, the label).
template <class Transitions>
std::vector<size_t> viterbiOneSpanEach(const std::vector<std::array<float, kLabels>>& emit, const Transitions& trans) {
  const size_t n = emit.size();
  constexpr size_t kMasks = size_t{1} << kOneSpan.size();
  constexpr size_t kStates = kMasks * kLabels;
  std::vector<size_t> path(n);
  if (n == 0) return path;
  std::vector<float> best(kStates, -INFINITY), next(kStates);
  std::vector<std::vector<uint16_t>> back(n, std::vector<uint16_t>(kStates, 0));
  for (size_t l = 0; l < kLabels; ++l)
    best[static_cast<size_t>(oneSpanBit(l)) * kLabels + l] = trans[kLabels][l] + emit[0][l];
  for (size_t i = 1; i < n; ++i) {
    std::fill(next.begin(), next.end(), -INFINITY);
    for (size_t from = 0; from < kStates; ++from) {
      if (best[from] == -INFINITY) continue;
      const size_t mask = from / kLabels, p = from % kLabels;
      for (size_t l = 0; l < kLabels; ++l) {
        const size_t bit = static_cast<size_t>(oneSpanBit(l));
        if (l != p && (mask & bit)) continue;  // that label's stretch is over
        const size_t to = (mask | bit) * kLabels + l;
        const float s = best[from] + trans[p][l] + emit[i][l];
        if (s > next[to]) {
          next[to] = s;
          back[i][to] = static_cast<uint16_t>(from);
        }
      }
    }
    std::swap(best, next);
  }
  size_t state = static_cast<size_t>(std::max_element(best.begin(), best.end()) - best.begin());
  for (size_t i = n; i-- > 0;) {
    path[i] = state % kLabels;
    state = back[i][state];
  }
  return path;
}

// Viterbi, then, if a label that makes one stretch made two, Viterbi under
// that constraint (a tenth of the entries: the cost stays small).
template <class Transitions>
std::vector<size_t> bestPath(const std::vector<std::array<float, kLabels>>& emit, const Transitions& trans) {
  std::vector<size_t> path = viterbi(emit, trans);
  if (!oneSpanEach(path)) path = viterbiOneSpanEach(emit, trans);
  return path;
}

}  // namespace

std::vector<Label> decode(const std::vector<std::array<float, kLabels>>& emissions,
                          const std::array<std::array<float, kLabels>, kLabels + 1>& transitions) {
  std::vector<Label> out;
  for (size_t label : bestPath(emissions, transitions)) out.push_back(static_cast<Label>(label));
  return out;
}

Reading Model::read(std::string_view entry) const { return read(entry, tokenize(entry)); }

Reading Model::read(std::string_view entry, const std::vector<Token>& tokens) const {
  Reading r;
  r.tokens = tokens;
  const std::vector<Scores> emit = emissions(entry, tokens);
  const std::vector<size_t> path = bestPath(emit, transitions_);
  for (size_t label : path) r.labels.push_back(static_cast<Label>(label));
  const size_t n = path.size();
  if (n == 0) return r;
  // Max-marginals: the best score of any sequence with label l at token i,
  // from a forward and a backward pass. A token's margin is how far its
  // label's max-marginal is ahead of the next label's.
  std::vector<Scores> forward(n), backward(n, Scores{});
  for (size_t l = 0; l < kLabels; ++l) forward[0][l] = transitions_[kLabels][l] + emit[0][l];
  for (size_t i = 1; i < n; ++i)
    for (size_t l = 0; l < kLabels; ++l) {
      float top = -INFINITY;
      for (size_t p = 0; p < kLabels; ++p) top = std::max(top, forward[i - 1][p] + transitions_[p][l]);
      forward[i][l] = top + emit[i][l];
    }
  for (size_t i = n - 1; i-- > 0;)
    for (size_t l = 0; l < kLabels; ++l) {
      float top = -INFINITY;
      for (size_t m = 0; m < kLabels; ++m)
        top = std::max(top, transitions_[l][m] + emit[i + 1][m] + backward[i + 1][m]);
      backward[i][l] = top;
    }
  std::vector<double> margins;
  for (size_t i = 0; i < n; ++i) {
    const float chosen = forward[i][path[i]] + backward[i][path[i]];
    float other = -INFINITY;
    for (size_t l = 0; l < kLabels; ++l)
      if (l != path[i]) other = std::max(other, forward[i][l] + backward[i][l]);
    margins.push_back(chosen - other);
  }
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
      const std::vector<size_t> guess = viterbi(emit, model.transitions_);
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
  const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
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
  for (Scores& s : model.weights_)
    for (float& w : s) w = static_cast<float>(take<int16_t>(in2)) * scale;
  for (Scores& s : model.transitions_)
    for (float& w : s) w = take<float>(in2);
  if (!in2.empty()) throw ModelError("the model file " + path.string() + " has bytes after its end");
  return model;
}

}  // namespace quillreader
