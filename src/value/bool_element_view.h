// bool_element_view: the element view of a bool container.
//
// std::vector<bool> packs its elements into bits, so no bool* can point at
// one; this view keeps the vector and the index instead and reads or writes
// the bit on every access. It behaves like the scalar views otherwise: kind
// bool, one element, a clone is an owned copy. A read-only view refuses every
// write like _value_t_pcdata_t does. getp(bool) answers with the address of a
// snapshot of the bit, good until the next getp on the same view.
//
// Thread safety: as the other views, none.
#pragma once

#include <qz/value/internal/value_data.h>

#include <vector>

namespace qz_detail {

class bool_element_view : public _value_t_data {
 public:
  // `owner` is the container storage holding `items`; the view keeps it alive.
  static bool_element_view* read_only(const std::vector<bool>& items, unsigned __int64 index,
                                      const _value_t_data* owner);
  static bool_element_view* writable(std::vector<bool>& items, unsigned __int64 index,
                                     const _value_t_data* owner);

  const std::type_info& type() const override;
  _value_t_data* clone() const override;
  _value_t_data* to_container() const override;
  bool equal(const _value_t_data& other) const override;
  bool less(const _value_t_data& other) const override;
  _value_t_data* get(unsigned __int64 index) const override;
  _value_t_data* get(unsigned __int64 index) override;
  unsigned short vartype() const override;
#define QZ_OVERRIDE_BIT(U)                    \
  U get(const U*) const override;             \
  void put(const U&) override;                \
  const U* getp(const U*) const override;
  QZ_VALUE_KINDS(QZ_OVERRIDE_BIT)
#undef QZ_OVERRIDE_BIT
  using _value_t_data::push_back;

 private:
  // `target` is the same vector as `items` for a writable view, else null.
  bool_element_view(const std::vector<bool>* items, std::vector<bool>* target, unsigned __int64 index,
                    const _value_t_data* owner) noexcept
      : items_(items), target_(target), index_(index), snapshot_(false), owner_(owner) {}

  bool current() const { return (*items_)[static_cast<size_t>(index_)]; }

  const std::vector<bool>* items_;
  std::vector<bool>* target_;
  unsigned __int64 index_;
  mutable bool snapshot_;
  _value_t_data_ref owner_;
};

}  // namespace qz_detail
