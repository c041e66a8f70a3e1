// Trains and evaluates the reference reader on labelled renderings.
//   reader_tool train LABELLED.tsv MODEL [--epochs N] [--seed S]
//   reader_tool evaluate MODEL LABELLED.tsv
//   reader_tool label MODEL < LINES
//   reader_tool tokenize < LINES
// A labelled line: id TAB style TAB family TAB text TAB "begin:end:label ...".
// Lines whose tokens differ from the reader's own tokenization are counted
// and left out, so that training never learns from a misaligned label.
#include <chrono>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "reader/ReferenceReader.h"

namespace {

using quillreader::Example;
using quillreader::Label;

struct Labelled {
  std::string style;
  Example example;
};

std::vector<std::string> split(const std::string& s, char sep) {
  std::vector<std::string> out;
  std::string part;
  std::istringstream in(s);
  while (std::getline(in, part, sep)) out.push_back(part);
  return out;
}

std::vector<Labelled> readLabelled(const std::string& path, size_t& misaligned) {
  std::ifstream in(path);
  if (!in) throw std::runtime_error("cannot read " + path);
  std::vector<Labelled> out;
  std::string line;
  while (std::getline(in, line)) {
    const std::vector<std::string> cols = split(line, '\t');
    if (cols.size() != 5) continue;
    Labelled l{cols[1], {cols[3], {}, {}}};
    l.example.tokens = quillreader::tokenize(l.example.text);
    const std::vector<std::string> triples = split(cols[4], ' ');
    bool aligned = triples.size() == l.example.tokens.size();
    for (size_t i = 0; aligned && i < triples.size(); ++i) {
      const std::vector<std::string> t = split(triples[i], ':');
      aligned = t.size() == 3 && std::stoul(t[0]) == l.example.tokens[i].begin &&
                std::stoul(t[1]) == l.example.tokens[i].end;
      if (aligned) l.example.labels.push_back(quillreader::labelNamed(t[2]));
    }
    if (!aligned) {
      ++misaligned;
      continue;
    }
    out.push_back(std::move(l));
  }
  return out;
}

// Spans of one label as (first token, last token).
std::set<std::pair<size_t, size_t>> spans(const std::vector<Label>& labels, Label label) {
  std::set<std::pair<size_t, size_t>> out;
  for (size_t i = 0; i < labels.size(); ++i) {
    if (labels[i] != label) continue;
    size_t j = i;
    while (j + 1 < labels.size() && labels[j + 1] == label) ++j;
    out.insert({i, j});
    i = j;
  }
  return out;
}

int train(int argc, char** argv) {
  int epochs = 6;
  uint64_t seed = 1;
  for (int i = 4; i + 1 < argc; i += 2) {
    if (std::string(argv[i]) == "--epochs") epochs = std::stoi(argv[i + 1]);
    if (std::string(argv[i]) == "--seed") seed = std::stoull(argv[i + 1]);
  }
  size_t misaligned = 0;
  std::vector<Labelled> labelled = readLabelled(argv[2], misaligned);
  std::vector<Example> examples;
  for (Labelled& l : labelled) examples.push_back(std::move(l.example));
  std::cerr << examples.size() << " examples, " << misaligned << " left out (tokens misaligned)\n";
  const auto start = std::chrono::steady_clock::now();
  const quillreader::Model model = quillreader::Model::train(examples, epochs, seed);
  model.save(argv[3]);
  std::cerr << "trained in "
            << std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count() << " s\n";
  return 0;
}

// Token accuracy and span F1 (a field counts when its tokens match exactly),
// per style and overall.
int evaluate(char** argv) {
  const quillreader::Model model = quillreader::Model::load(argv[2]);
  size_t misaligned = 0;
  const std::vector<Labelled> labelled = readLabelled(argv[3], misaligned);
  struct Tally {
    size_t tokens = 0, right = 0, gold = 0, guessed = 0, matched = 0;
  };
  std::map<std::string, Tally> byStyle;
  Tally all;
  for (const Labelled& l : labelled) {
    const quillreader::Reading r = model.read(l.example.text, l.example.tokens);
    Tally& t = byStyle[l.style];
    for (Tally* x : {&t, &all}) {
      for (size_t i = 0; i < r.labels.size(); ++i) {
        ++x->tokens;
        x->right += r.labels[i] == l.example.labels[i];
      }
      for (size_t k = 1; k < quillreader::kLabels; ++k) {
        const auto gold = spans(l.example.labels, static_cast<Label>(k));
        const auto guess = spans(r.labels, static_cast<Label>(k));
        x->gold += gold.size();
        x->guessed += guess.size();
        for (const auto& s : guess) x->matched += gold.count(s);
      }
    }
  }
  auto line = [](const std::string& name, const Tally& t) {
    const double p = t.guessed ? static_cast<double>(t.matched) / static_cast<double>(t.guessed) : 0;
    const double r = t.gold ? static_cast<double>(t.matched) / static_cast<double>(t.gold) : 0;
    std::printf("%-45s tokens %.3f  span F1 %.3f\n", name.c_str(),
                t.tokens ? static_cast<double>(t.right) / static_cast<double>(t.tokens) : 0,
                p + r > 0 ? 2 * p * r / (p + r) : 0);
  };
  for (const auto& [style, t] : byStyle) line(style, t);
  line("all", all);
  // Span F1 of each label over every style.
  for (size_t k = 1; k < quillreader::kLabels; ++k) {
    Tally t;
    for (const Labelled& l : labelled) {
      const quillreader::Reading r = model.read(l.example.text, l.example.tokens);
      const auto gold = spans(l.example.labels, static_cast<Label>(k));
      const auto guess = spans(r.labels, static_cast<Label>(k));
      t.gold += gold.size();
      t.guessed += guess.size();
      for (const auto& s : guess) t.matched += gold.count(s);
    }
    if (t.gold > 0) line("  " + std::string(quillreader::labelName(static_cast<Label>(k))), t);
  }
  std::fprintf(stderr, "%zu left out (tokens misaligned)\n", misaligned);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const std::string command = argc > 1 ? argv[1] : "";
    if (command == "train" && argc >= 4) return train(argc, argv);
    if (command == "evaluate" && argc == 4) return evaluate(argv);
    if (command == "label" && argc == 3) {
      // Each line read, its tokens with their labels: "Kernis/author ,/author ...".
      const quillreader::Model model = quillreader::Model::load(argv[2]);
      std::string line;
      while (std::getline(std::cin, line)) {
        const quillreader::Reading r = model.read(line);
        for (size_t i = 0; i < r.tokens.size(); ++i)
          std::cout << line.substr(r.tokens[i].begin, r.tokens[i].end - r.tokens[i].begin) << "/"
                    << quillreader::labelName(r.labels[i]) << " ";
        std::cout << "\t" << r.confidence << "\n";
      }
      return 0;
    }
    if (command == "tokenize") {
      // One line of begin:end pairs for each line read.
      std::string line;
      while (std::getline(std::cin, line)) {
        for (const quillreader::Token& t : quillreader::tokenize(line)) std::cout << t.begin << ":" << t.end << " ";
        std::cout << "\n";
      }
      return 0;
    }
    std::cerr << "usage: reader_tool train LABELLED.tsv MODEL [--epochs N] [--seed S]\n"
                 "       reader_tool evaluate MODEL LABELLED.tsv\n";
    return 2;
  } catch (const std::exception& e) {
    std::cerr << "reader_tool: " << e.what() << "\n";
    return 1;
  }
}
