#include "quillpaper/references/ReaderModel.h"

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <mutex>
#include <vector>

namespace quillpaper {

namespace {

std::vector<std::filesystem::path> candidates() {
  std::vector<std::filesystem::path> out;
  if (const char* env = std::getenv("QUILLFORMATAPA_READER_MODEL"); env && *env) {
    out.emplace_back(env);
    return out;  // a model asked for by name is the only one tried
  }
  out.emplace_back(QFA_READER_MODEL_INSTALLED);
  out.emplace_back(QFA_READER_MODEL_SOURCE);
  return out;
}

}  // namespace

const quillreader::Model* readerModel(std::string& problem) {
  static std::once_flag once;
  static std::unique_ptr<quillreader::Model> model;
  static std::string why;
  std::call_once(once, [] {
    for (const std::filesystem::path& path : candidates()) {
      std::error_code ec;
      if (!std::filesystem::exists(path, ec) && std::getenv("QUILLFORMATAPA_READER_MODEL") == nullptr) continue;
      try {
        model = std::make_unique<quillreader::Model>(quillreader::Model::load(path));
        return;
      } catch (const quillreader::ModelError& e) {
        why = e.what();
        return;
      }
    }
    why = "the reader's model was not found";
  });
  if (!model) problem = why;
  return model.get();
}

}  // namespace quillpaper
