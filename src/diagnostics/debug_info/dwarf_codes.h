// The DWARF numbers the reader needs (tags, attributes, forms, line-program
// opcodes), versions 2 to 5 and GCC's extensions.
#pragma once

#include <cstdint>

namespace debug_info {
namespace dw {

enum tag : std::uint16_t {
  tag_class_type = 0x02,
  tag_structure_type = 0x13,
  tag_union_type = 0x17,
  tag_inlined_subroutine = 0x1d,
  tag_compile_unit = 0x11,
  tag_subprogram = 0x2e,
  tag_namespace = 0x39,
  tag_interface_type = 0x38,
  tag_partial_unit = 0x3c,
  tag_skeleton_unit = 0x4a,
};

enum attribute : std::uint16_t {
  at_name = 0x03,
  at_stmt_list = 0x10,
  at_low_pc = 0x11,
  at_high_pc = 0x12,
  at_abstract_origin = 0x31,
  at_declaration = 0x3c,
  at_specification = 0x47,
  at_entry_pc = 0x52,
  at_ranges = 0x55,
  at_call_file = 0x58,
  at_call_line = 0x59,
  at_linkage_name = 0x6e,
  at_str_offsets_base = 0x72,
  at_addr_base = 0x73,
  at_rnglists_base = 0x74,
  at_mips_linkage_name = 0x2007,
};

enum form : std::uint16_t {
  form_addr = 0x01,
  form_block2 = 0x03,
  form_block4 = 0x04,
  form_data2 = 0x05,
  form_data4 = 0x06,
  form_data8 = 0x07,
  form_string = 0x08,
  form_block = 0x09,
  form_block1 = 0x0a,
  form_data1 = 0x0b,
  form_flag = 0x0c,
  form_sdata = 0x0d,
  form_strp = 0x0e,
  form_udata = 0x0f,
  form_ref_addr = 0x10,
  form_ref1 = 0x11,
  form_ref2 = 0x12,
  form_ref4 = 0x13,
  form_ref8 = 0x14,
  form_ref_udata = 0x15,
  form_indirect = 0x16,
  form_sec_offset = 0x17,
  form_exprloc = 0x18,
  form_flag_present = 0x19,
  form_strx = 0x1a,
  form_addrx = 0x1b,
  form_ref_sup4 = 0x1c,
  form_strp_sup = 0x1d,
  form_data16 = 0x1e,
  form_line_strp = 0x1f,
  form_ref_sig8 = 0x20,
  form_implicit_const = 0x21,
  form_loclistx = 0x22,
  form_rnglistx = 0x23,
  form_ref_sup8 = 0x24,
  form_strx1 = 0x25,
  form_strx2 = 0x26,
  form_strx3 = 0x27,
  form_strx4 = 0x28,
  form_addrx1 = 0x29,
  form_addrx2 = 0x2a,
  form_addrx3 = 0x2b,
  form_addrx4 = 0x2c,
  form_gnu_addr_index = 0x1f01,
  form_gnu_str_index = 0x1f02,
  form_gnu_ref_alt = 0x1f20,
  form_gnu_strp_alt = 0x1f21,
};

// Unit types of DWARF 5 headers.
enum unit_type : std::uint8_t {
  ut_compile = 0x01,
  ut_type = 0x02,
  ut_partial = 0x03,
  ut_skeleton = 0x04,
  ut_split_compile = 0x05,
  ut_split_type = 0x06,
};

// Range list entries of .debug_rnglists.
enum range_entry : std::uint8_t {
  rle_end_of_list = 0,
  rle_base_addressx = 1,
  rle_startx_endx = 2,
  rle_startx_length = 3,
  rle_offset_pair = 4,
  rle_base_address = 5,
  rle_start_end = 6,
  rle_start_length = 7,
};

// Content types of DWARF 5 line-table directory and file entries.
enum line_content : std::uint16_t {
  lnct_path = 0x1,
  lnct_directory_index = 0x2,
};

}  // namespace dw
}  // namespace debug_info
