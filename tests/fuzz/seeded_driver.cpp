#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

// Runs a fuzz target without libFuzzer: fuzz_NAME SEED_FOLDER DICTIONARY. Every seed as it is, then mutations of the seeds
// from a fixed random sequence, so that a failure comes back in the next run.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

constexpr int n_mutations = 30000;

std::string whole_file(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<std::string> read_seeds(const char* folder) {
  std::vector<std::filesystem::path> paths;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) paths.push_back(entry.path());
  std::sort(paths.begin(), paths.end());
  std::vector<std::string> seeds;
  for (const auto& path : paths) seeds.push_back(whole_file(path));
  return seeds;
}

/// The quoted words of a libFuzzer dictionary; the only escape our dictionaries use is \x0A, the line end.
std::vector<std::string> read_words(const char* path) {
  std::ifstream file(path);
  std::vector<std::string> found;
  for (std::string line; std::getline(file, line);) {
    if (line.size() < 3 || line.front() != '"' || line.back() != '"') continue;
    std::string word;
    for (std::size_t i = 1; i + 1 < line.size(); ++i) {
      const bool newline = line.compare(i, 4, "\\x0A") == 0;
      word.push_back(newline ? '\n' : line[i]);
      if (newline) i += 3;
    }
    found.push_back(word);
  }
  return found;
}

class MUTATOR {
 public:
  MUTATOR(std::vector<std::string> seeds, std::vector<std::string> words)
      : seeds_(std::move(seeds)), words_(std::move(words)) {}

  /// A seed with up to eight changes.
  std::string next() {
    std::string text = any_of(seeds_);
    for (std::size_t n = 1 + below(8); n > 0; --n) change(text);
    return text;
  }

 private:
  std::size_t below(std::size_t n) { return n == 0 ? 0 : random_() % n; }
  const std::string& any_of(const std::vector<std::string>& list) { return list[below(list.size())]; }

  /// Start of a random line.
  std::size_t line_start(const std::string& text) {
    const std::size_t at = text.rfind('\n', below(text.size()));
    return at == std::string::npos ? 0 : at + 1;
  }

  void change(std::string& text) {
    const std::size_t at = below(text.size() + 1), kind = below(7);
    if (kind == 0) text.insert(at, any_of(words_));
    if (kind == 1) text.erase(at, 1 + below(12));
    if (kind == 2) text.insert(at, 1, static_cast<char>(below(256)));
    if (kind == 3 && at < text.size()) text[at] = static_cast<char>(below(256));
    if (kind == 4) text.resize(at);
    if (kind == 5) insert_piece(text, at);
    if (kind == 6) repeat_line(text);
  }

  /// A piece of another seed.
  void insert_piece(std::string& text, std::size_t at) {
    const std::string& other = any_of(seeds_);
    const std::size_t from = below(other.size());
    text.insert(at, other, from, below(other.size() - from) + 1);
  }

  /// A line twice, or many times.
  void repeat_line(std::string& text) {
    const std::size_t from = line_start(text);
    const std::string line = text.substr(from, text.find('\n', from) - from) + '\n';
    for (std::size_t n = below(20) == 0 ? 600 : 1; n > 0; --n) text.insert(from, line);
  }

  std::vector<std::string> seeds_;
  std::vector<std::string> words_;
  std::mt19937 random_{20240229};
};

void run(const std::string& text) {
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return std::fprintf(stderr, "usage: %s SEED_FOLDER DICTIONARY\n", argv[0]), 2;
  const std::vector<std::string> seeds = read_seeds(argv[1]);
  const std::vector<std::string> words = read_words(argv[2]);
  if (seeds.empty() || words.empty()) return std::fprintf(stderr, "no seeds or no words\n"), 2;
  for (const std::string& seed : seeds) run(seed);
  MUTATOR mutator(seeds, words);
  for (int n = 0; n < n_mutations; ++n) run(mutator.next());
  std::printf("%zu seeds and %d mutations\n", seeds.size(), n_mutations);
  return 0;
}
