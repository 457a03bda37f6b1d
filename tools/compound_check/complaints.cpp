#include "tools/compound_check/complaints.h"

#include <cstdio>

namespace compound {
namespace {

constexpr std::size_t Limit = 50;  // of each grade

std::string Hexadecimal(std::uint64_t number) {
  char text[24];
  std::snprintf(text, sizeof text, "0x%llX", static_cast<unsigned long long>(number));
  return text;
}

}  // namespace

std::string EvidenceText(const Evidence& evidence) {
  const struct {
    const char* name;
    const std::optional<std::uint64_t>& number;
  } parts[] = {
      {"offset ", evidence.offset}, {"expected ", evidence.expected}, {"found ", evidence.found}};
  std::string text;
  for (const auto& part : parts) {
    if (!part.number) continue;
    text += (text.empty() ? " [" : ", ") + (part.name + Hexadecimal(*part.number));
  }
  return text.empty() ? text : text + "]";
}

void Complaints::Add(Grade grade, const std::string& where, const std::string& what,
                     const Evidence& evidence) {
  Kept& kept = grade == Grade::Damaged ? damaged_ : unusual_;
  if (kept.complaints.size() < Limit) {
    kept.complaints.push_back({grade, where + ": " + what, evidence});
  } else {
    ++kept.leftOut;
  }
}

std::vector<Complaint> Complaints::Sorted() const {
  std::vector<Complaint> all;
  for (const Kept* kept : {&damaged_, &unusual_}) {
    all.insert(all.end(), kept->complaints.begin(), kept->complaints.end());
    if (kept->leftOut == 0) continue;
    all.push_back({kept->complaints.front().grade,
                   "and " + std::to_string(kept->leftOut) + " more like these",
                   {}});
  }
  return all;
}

}  // namespace compound
