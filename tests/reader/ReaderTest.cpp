#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "reader/ReferenceReader.h"

namespace quillreader {
namespace {

std::vector<std::string> texts(std::string_view entry) {
  std::vector<std::string> out;
  for (const Token& t : tokenize(entry)) out.emplace_back(entry.substr(t.begin, t.end - t.begin));
  return out;
}

// The tokens the training data was labelled with: a change here misaligns
// every label of the committed model.
TEST(ReaderTest, Tokens) {
  using V = std::vector<std::string>;
  const std::pair<const char*, V> rows[] = {
      {"Kernis, M. H. (1993).", V{"Kernis", ",", "M", ".", "H", ".", "(", "1993", ")", "."}},
      {"Brooks-Gunn and O’Neil's", V{"Brooks-Gunn", "and", "O’Neil's"}},
      {"65:1190–204.", V{"65", ":", "1190", "–", "204", "."}},
      {"https://doi.org/10.1037/a0012. Next", V{"https://doi.org/10.1037/a0012", ".", "Next"}},
      {"doi:10.1037/x, 10.1000/182).", V{"doi:10.1037/x", ",", "10.1000/182", ")", "."}},
      {"“Title,” Jöreskog", V{"“", "Title", ",", "”", "Jöreskog"}},
      {"", V{}},
  };
  for (const auto& [entry, expected] : rows) EXPECT_EQ(texts(entry), expected) << entry;
}

std::vector<Example> tinyCorpus() {
  // Two shapes of entry, labelled by hand.
  std::vector<Example> out;
  auto add = [&](std::string text, std::vector<Label> labels) {
    Example e{std::move(text), {}, std::move(labels)};
    e.tokens = tokenize(e.text);
    EXPECT_EQ(e.tokens.size(), e.labels.size()) << e.text;
    out.push_back(std::move(e));
  };
  using L = Label;
  for (const char* name : {"Lee", "Park", "Diaz", "Smith"}) {
    add(std::string(name) + ", A. (2001). Sleep. Journal, 3, 4.",
        {L::Author, L::Author, L::Author, L::Author, L::Other, L::Date, L::Other, L::Other, L::Title, L::Other,
         L::Container, L::Other, L::Volume, L::Other, L::Pages, L::Other});
  }
  return out;
}

// The same examples and seed give the same model, byte for byte.
TEST(ReaderTest, TrainingIsDeterministic) {
  const std::filesystem::path dir = std::filesystem::path(::testing::TempDir()) / "reader-determinism";
  std::filesystem::create_directories(dir);
  auto bytes = [](const std::filesystem::path& p) {
    std::ifstream in(p, std::ios::binary);
    return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  };
  Model::train(tinyCorpus(), 3, 7).save(dir / "a.model");
  Model::train(tinyCorpus(), 3, 7).save(dir / "b.model");
  EXPECT_EQ(bytes(dir / "a.model"), bytes(dir / "b.model"));
  // And what it learnt reads a new entry of the same shape.
  const Model model = Model::load(dir / "a.model");
  const std::string entry = "Kim, A. (2001). Sleep. Journal, 3, 4.";
  const Reading r = model.read(entry);
  EXPECT_EQ(r.spans(entry, Label::Author), std::vector<std::string>{"Kim, A."});
  EXPECT_EQ(r.spans(entry, Label::Date), std::vector<std::string>{"2001"});
  EXPECT_GT(r.confidence, 0);
  std::filesystem::remove_all(dir);
}

// A title, a container, a publisher … is one stretch of an entry: a title
// interrupted by a token the scores call other stays one title, while an
// author list may be interrupted ("Lee, A., … & Kim, B."); and there is a title.
TEST(ReaderTest, OneStretchPerPart) {
  constexpr size_t kTitle = static_cast<size_t>(Label::Title), kOther = static_cast<size_t>(Label::Other);
  constexpr size_t kAuthor = static_cast<size_t>(Label::Author);
  std::array<std::array<float, kLabels>, kLabels + 1> flat{};
  auto scores = [](std::initializer_list<std::pair<size_t, float>> best) {
    std::array<float, kLabels> s{};
    for (const auto& [label, score] : best) s[label] = score;
    return s;
  };
  using L = Label;
  EXPECT_EQ(decode({scores({{kTitle, 5}}), scores({{kOther, 3}, {kTitle, 2}}), scores({{kTitle, 5}})}, flat),
            (std::vector<Label>{L::Title, L::Title, L::Title}));
  EXPECT_EQ(decode({scores({{kAuthor, 5}}), scores({{kOther, 3}, {kAuthor, 2}}), scores({{kAuthor, 5}}),
                    scores({{kTitle, 5}})},
                   flat),
            (std::vector<Label>{L::Author, L::Other, L::Author, L::Title}));
  // And every reference has a title: the best reading with one.
  EXPECT_EQ(decode({scores({{kAuthor, 5}, {kTitle, 1}}), scores({{kOther, 2}, {kTitle, 1}})}, flat),
            (std::vector<Label>{L::Author, L::Title}));
  EXPECT_TRUE(decode({}, flat).empty());
}

// A model that cannot be used is a clear error, never a crash or a guess.
TEST(ReaderTest, UnusableModelsAreClearErrors) {
  const std::filesystem::path dir = std::filesystem::path(::testing::TempDir()) / "reader-corrupt";
  std::filesystem::create_directories(dir);
  Model::train(tinyCorpus(), 1, 1).save(dir / "good.model");
  std::ifstream in(dir / "good.model", std::ios::binary);
  const std::string good((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  std::string flipped = good;
  flipped[good.size() / 2] ^= 0x40;
  const std::pair<std::string, std::string> rows[] = {
      {"not a model at all", "is not a model of the reference reader"},
      {good.substr(0, good.size() / 3), "checksum"},
      {flipped, "damaged"},
      {good.substr(0, 11), "cut short"},
  };
  for (const auto& [content, message] : rows) {
    std::ofstream(dir / "bad.model", std::ios::binary | std::ios::trunc) << content;
    try {
      Model::load(dir / "bad.model");
      ADD_FAILURE() << "no error for " << message;
    } catch (const ModelError& e) {
      EXPECT_NE(std::string(e.what()).find(message), std::string::npos) << e.what();
    }
  }
  EXPECT_THROW(Model::load(dir / "missing.model"), ModelError);
  std::filesystem::remove_all(dir);
}

}  // namespace
}  // namespace quillreader
