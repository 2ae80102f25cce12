meta:
  id: veltra
  title: Container files and records of network-cabling testers
  application: libveltracommon
  file-extension: vres
  xref:
    mime: application/vnd.veltra.container
  ks-version: '0.10'
  endian: be
doc: |
  A container: a file header, sections, nothing after them. The layout, and why it is as it is, stands in format.md
  beside this file; offsets, kinds and names here are those of its tables.

  What is refused: a file that does not begin with a file header, was never closed, is cut, or has a section without a
  byte. A payload is looked at only when it is asked for: `content` of a section refuses a compressed payload that does
  not inflate, `record` a record that is not as its table says. So one damaged section does not hide the others.

  What is not: a wrong CRC-32, which cannot be computed here. Compare `hdr_crc` of each section with the CRC-32 of its
  first 16 bytes and `data_crc` with that of `payload.stored`; only then is a file intact.

  A record on its own, without a container around it, is read by starting at its type.
doc-ref: format.md

seq:
  - id: file_header
    type: file_header
  - id: body
    type: sections
    size: file_header.total_length - 20 - file_header.data_size
  - id: after_end
    size-eos: true
    doc: No writer leaves a byte here. Readers pass over what the total length does not count.

types:
  # --- the container

  file_header:
    seq:
      - id: magic
        type: u2
        valid: 0x5046
        doc: The letters "PF".
      - id: type
        type: u2
        enum: section_type
        valid: section_type::file_header
      - id: version
        type: u2
        doc: Written as 1.
      - id: flags
        type: u2
        doc: Written as 0.
      - id: data_size
        type: u4
        valid:
          min: 4
        doc: Written as 4.
      - id: data_crc
        type: u4
        doc: CRC-32 of the payload, the total length and what follows it here.
      - id: hdr_crc
        type: u4
        doc: CRC-32 of the 16 bytes before it.
      - id: total_length
        type: u4le
        valid:
          min: 20 + data_size
        doc: Bytes of the whole file, this header included. 20 in a file that was never closed, with a wrong data_crc.
      - id: rest
        size: data_size - 4

  sections:
    seq:
      - id: sections
        type: section
        repeat: eos

  section:
    seq:
      - id: magic
        type: u2
        doc: Written as 0x5046. Readers do not compare it, so any is taken here, too.
      - id: type
        type: u2
        enum: section_type
      - id: version
        type: u2
        doc: Version of the content; its meaning belongs to the type.
      - id: flags
        type: u2
        doc: Bit 0 is is_compressed, bits 12 to 15 are level; the others have no meaning and are kept.
      - id: data_size
        type: u4
        valid:
          min: 1
        doc: Bytes of the payload as stored.
      - id: data_crc
        type: u4
        doc: CRC-32 of the payload as stored.
      - id: hdr_crc
        type: u4
        doc: CRC-32 of the 16 bytes before it.
      - id: payload
        type: payload(is_compressed, type.to_i)
        size: data_size
    instances:
      is_compressed:
        value: (flags & 1) != 0
      level:
        value: flags >> 12
        doc: The zlib level; two levels are ored where a section object was used twice. Nothing depends on it.
      content:
        value: 'is_compressed ? payload.compressed.content : payload.plain'
        doc: The original bytes, and the record they begin with.

  payload:
    params:
      - id: is_compressed
        type: bool
      - id: section_type
        type: u2
    seq:
      - id: stored
        size-eos: true
    instances:
      plain:
        pos: 0
        size-eos: true
        type: content(section_type)
        if: not is_compressed
      compressed:
        pos: 0
        type: compressed(section_type)
        if: is_compressed

  compressed:
    params:
      - id: section_type
        type: u2
    seq:
      - id: original_size
        type: u4le
        valid:
          max: 8388608
        doc: Bytes after decompression. Readers take a claim of more than there is, so it is taken here.
      - id: content
        process: zlib
        size-eos: true
        type: content(section_type)
        valid:
          expr: _.bytes.length <= original_size
        doc: |
          A zlib stream (RFC 1950); bytes after its end are passed over. A runtime may inflate more than original_size before it
          is compared: a program that reads files of strangers bounds its inflation itself.

  content:
    params:
      - id: section_type
        type: u2
    seq:
      - id: bytes
        size-eos: true
    instances:
      has_record_by_type:
        value: section_type == 200 or section_type == 101 or section_type == 102
      start:
        pos: 0
        type: record_start
        if: bytes.length >= 12
      has_record:
        value: 'has_record_by_type or (bytes.length >= 12 ? start.is_known : false)'
        doc: Any section may begin with a record; these types must.
      record:
        pos: 0
        type:
          switch-on: section_type
          cases:
            200: result_summary
            101: database_package_manifest
            102: database_package_manifest
            _: any_record
        if: has_record
        doc: Bytes after the record are passed over, as readers do.

  # --- what stands before records

  record_start:
    seq:
      - id: marker
        type: u2
      - id: versions
        type: u2
      - id: system_id
        type: u2
      - id: class_id
        type: u2
    instances:
      id:
        value: system_id * 65536 + class_id
      is_known:
        value: >-
          marker == 0xabcd and (id == 0x410015 or (id >= 0x510001 and id <= 0x510004) or (id >= 0x510006 and id <= 0x51000b))

  record_header:
    params:
      - id: id
        type: u4
      - id: newest_version
        type: u1
    seq:
      - id: marker
        type: u2
        valid: 0xabcd
      - id: format
        type: u1
        valid: 1
        doc: Version of this header.
      - id: class_version
        type: u1
        valid:
          max: newest_version
        doc: A record of version n has the fields of all versions up to n. 0 is read like the oldest.
      - id: system_id
        type: u2
        valid: id >> 16
        doc: 0x51 for the records of this library, 0x41 for those of the fibre services.
      - id: class_id
        type: u2
        valid: id & 0xffff
      - id: length
        type: u4
        doc: Bytes of the fields. They take all of them, or the record is refused.

  any_record:
    seq:
      - id: record
        type:
          switch-on: id
          cases:
            0x410015: otdr_span
            0x510001: result_summary
            0x510002: result_summary_list
            0x510003: equipment_information
            0x510004: instrument_settings
            0x510006: folder_metadata_list
            0x510007: database_package_manifest_summary
            0x510008: database_version
            0x510009: database_package_manifest
            0x51000a: database_descriptor_list
            0x51000b: orbel_settings
    instances:
      start:
        pos: 0
        type: record_start
      id:
        value: start.id

  # --- texts

  text:
    doc: Wire kind string, and counted text; they have the same bytes. Not checked for UTF-8; zeros inside are kept.
    seq:
      - id: length
        type: u4
      - id: bytes
        size: length
    instances:
      value:
        value: bytes.to_s("UTF-8")

  terminated_text:
    doc: Counted text with a terminator. A reader takes it up to its first zero byte.
    seq:
      - id: length
        type: u4
        valid:
          min: 1
        doc: Of the text plus 1.
      - id: bytes
        size: length
        terminator: 0
    instances:
      value:
        value: bytes.to_s("UTF-8")

  # --- measurement values

  scaled_int:
    seq:
      - id: class_version
        type: u1
        valid:
          max: 1
      - id: raw
        type: s4
        enum: reserved_raw
        doc: The value times 10 to the power of scaled_to, or a reserved value.
      - id: scaled_to
        type: s1
        doc: Decimals, -1 to 4. Another value is read and has no text.
    instances:
      is_finite:
        value: raw.to_i != -2147483647 and raw.to_i != 2147483647 and raw.to_i != -2147483646
      value:
        value: >-
          scaled_to == -1 ? raw.to_i * 10.0 : scaled_to == 0 ? raw.to_i * 1.0 : scaled_to == 1 ? raw.to_i / 10.0 :
          scaled_to == 2 ? raw.to_i / 100.0 : scaled_to == 3 ? raw.to_i / 1000.0 : raw.to_i / 10000.0
        if: is_finite and scaled_to >= -1 and scaled_to <= 4

  display_meas:
    seq:
      - id: class_version
        type: u1
        valid:
          max: 1
      - id: value
        type: scaled_int
      - id: type
        type: s1
        enum: display_type

  tolerance_meas:
    seq:
      - id: class_version
        type: u1
        valid:
          max: 1
      - id: value
        type: scaled_int
      - id: type
        type: s1
        enum: display_type
      - id: pos_tolerance
        type: f4
        doc: What may be added to the value, in its unit; NaN without a bound.
      - id: neg_tolerance
        type: f4
        doc: What may be taken from it; NaN without a bound. 0 with a value that is not a number marks "not applicable".

  celsius:
    seq:
      - id: celsius
        type: s2
        doc: Hundredths of a degree; -32768 not set.

  # --- test results

  result_summary:
    seq:
      - id: header
        type: record_header(0x510001, 1)
      - id: fields
        type: result_summary_fields
        size: header.length
        valid:
          expr: _._io.eof

  result_summary_fields:
    seq:
      - id: result_name
        type: text
      - id: result_type
        type: s1
        enum: result_type
      - id: time_stamp
        type: s8
        doc: Seconds since 1970-01-01 00:00 UTC.
      - id: status
        type: s1
        enum: status
      - id: length
        type: display_meas
        doc: Headline length.
      - id: headroom
        type: display_meas
        doc: Headline headroom.
      - id: test_flags
        type: u4
        doc: Bit i is set where the test with the flag value 2^i is contained.
      - id: num_pass_tests
        type: s1
        doc: One signed byte, as the other two; 200 reads as -56.
      - id: num_pass_star_tests
        type: s1
      - id: num_fail_tests
        type: s1

  result_summary_list:
    seq:
      - id: header
        type: record_header(0x510002, 1)
      - id: fields
        type: result_summary_list_fields
        size: header.length
        valid:
          expr: _._io.eof

  result_summary_list_fields:
    seq:
      - id: count
        type: u2
      - id: elements
        type: result_summary
        repeat: expr
        repeat-expr: count

  result_path_summary:
    seq:
      - id: class_version
        type: u1
        valid:
          max: 1
      - id: result_name
        type: text
      - id: result_type
        type: s1
        enum: result_type
      - id: time_stamp
        type: s8
        doc: Seconds since 1970-01-01 00:00 UTC.
      - id: path_name
        type: text
      - id: filesize
        type: u4
        doc: Bytes.

  result_path_summary_list:
    seq:
      - id: class_version
        type: u1
        valid:
          max: 1
      - id: count
        type: u2
      - id: elements
        type: result_path_summary
        repeat: expr
        repeat-expr: count

  otdr_span:
    seq:
      - id: header
        type: record_header(0x410015, 1)
      - id: fields
        type: otdr_span_fields
        size: header.length
        valid:
          expr: _._io.eof

  otdr_span_fields:
    seq:
      - id: span_start
        type: scaled_int
        doc: Where the span starts along the fibre.
      - id: span_end
        type: scaled_int

  # --- folders, equipment, settings

  folder_metadata:
    doc: A stored length of 0 ends the element where it stands; alone it is refused then, in a list it stays.
    seq:
      - id: name_length
        type: u4
      - id: name
        size: name_length
        terminator: 0
      - id: dir_path_length
        type: u4
        if: name_length != 0
      - id: dir_path
        size: dir_path_length
        terminator: 0
        if: name_length != 0
      - id: has_subdir
        type: u1
        if: is_whole
        doc: 0 is false, any other value true.
    instances:
      is_whole:
        value: 'name_length == 0 ? false : dir_path_length != 0'

  folder_metadata_list:
    seq:
      - id: header
        type: record_header(0x510006, 1)
      - id: fields
        type: folder_metadata_list_fields
        size: header.length
        valid:
          expr: _._io.eof

  folder_metadata_list_fields:
    seq:
      - id: count
        type: u2
      - id: folders
        type: folder_metadata
        repeat: expr
        repeat-expr: count

  equipment_information:
    seq:
      - id: header
        type: record_header(0x510003, 3)
      - id: fields
        type: equipment_information_fields(header.class_version)
        size: header.length
        valid:
          expr: _._io.eof

  equipment_information_fields:
    params:
      - id: class_version
        type: u1
    seq:
      - id: software_version
        type: text
      - id: model_id_str
        type: text
      - id: model_hardware_revision
        type: s4
      - id: model_serial_number
        type: text
      - id: module_id
        type: s4
      - id: module_hardware_revision
        type: s4
      - id: module_serial_number
        type: text
      - id: module_calibration_time
        type: s8
        doc: Seconds since 1970-01-01 00:00 UTC, as the other times.
      - id: lia_id
        type: s4
        if: class_version > 1
        doc: Id of the link interface adapter, 0 none.
      - id: lia_serial_number
        type: text
        if: class_version > 1
        doc: Of a fibre-inspection probe its firmware version.
      - id: lia_calibration_time
        type: s8
        if: class_version > 1
      - id: module_first_use_date
        type: s8
        if: class_version > 2

  instrument_settings:
    seq:
      - id: header
        type: record_header(0x510004, 3)
      - id: fields
        type: instrument_settings_fields(header.class_version)
        size: header.length
        valid:
          expr: _._io.eof

  instrument_settings_fields:
    doc: An unknown choice is written as 0xff.
    params:
      - id: class_version
        type: u1
    seq:
      - id: locale
        type: u1
        enum: locale
      - id: power_down_timeout
        type: u1
        enum: power_down_timeout
      - id: remote_mode_enabled
        type: u1
      - id: audible_tone_enabled
        type: u1
      - id: date_format
        type: u1
        enum: date_format
      - id: time_format
        type: u1
        enum: time_format
      - id: language
        type: u1
        enum: language
      - id: length_units
        type: u1
        enum: length_units
      - id: numeric_format
        type: u1
        enum: numeric_format
      - id: backlight_timeout
        type: u1
        enum: backlight_timeout
      - id: power_line_frequency
        type: u1
        enum: power_line_frequency
      - id: plot_grid_enabled
        type: u1
      - id: display_brightness
        type: s2
      - id: ip_address_source
        type: u1
        enum: ip_address_source
      - id: ip_address
        type: text
      - id: ip_subnet
        type: text
      - id: ip_gateway
        type: text
      - id: ip_dns
        type: text
        repeat: expr
        repeat-expr: 4
      - id: time_zone
        type: text
        if: class_version > 1
        doc: Name as in Europe/Berlin; empty is UTC.
      - id: host_name
        type: text
        if: class_version > 2
        doc: Name in the network; empty is the factory name.

  orbel_settings:
    doc: JSON; whether the text is that of such a record is not told here.
    seq:
      - id: header
        type: record_header(0x51000b, 255)
      - id: json
        type: terminated_text
        size: header.length
        valid:
          expr: _._io.eof

  # --- database packages

  database_version:
    seq:
      - id: header
        type: record_header(0x510008, 1)
      - id: fields
        type: database_version_fields
        size: header.length
        valid:
          expr: _._io.eof

  database_version_fields:
    seq:
      - id: schema
        type: u2
      - id: content
        type: u2
      - id: object
        type: u2
      - id: build
        type: u2

  customer_database_version:
    seq:
      - id: major
        type: u2
      - id: minor
        type: u2
      - id: suffix
        type: text

  database_descriptor:
    seq:
      - id: version
        type: database_version
      - id: db_type
        type: s4
        doc: Agreed between the builders and the users of packages.
      - id: file_path_length
        type: u4
        valid:
          min: 1
          max: 1024
      - id: file_path
        size: file_path_length - 1
      - id: file_path_end
        contents: [0]
      - id: min_req_firmware_version
        type: text

  database_descriptor_list:
    seq:
      - id: header
        type: record_header(0x51000a, 1)
      - id: fields
        type: database_descriptor_list_fields
        size: header.length
        valid:
          expr: _._io.eof

  database_descriptor_list_fields:
    seq:
      - id: count
        type: u4
        valid:
          min: 1
          max: 50
      - id: descriptors
        type: database_descriptor
        repeat: expr
        repeat-expr: count

  database_package_manifest_summary:
    seq:
      - id: header
        type: record_header(0x510007, 1)
      - id: fields
        type: database_package_manifest_summary_fields
        size: header.length
        valid:
          expr: _._io.eof

  database_package_manifest_summary_fields:
    seq:
      - id: customer_version
        type: customer_database_version
      - id: release_type
        type: u2
      - id: build
        type: u2
      - id: type
        type: u2
      - id: min_req_firmware_version
        type: text

  database_package_manifest:
    seq:
      - id: header
        type: record_header(0x510009, 1)
      - id: fields
        type: database_package_manifest_fields
        size: header.length
        valid:
          expr: _._io.eof

  database_package_manifest_fields:
    seq:
      - id: summary
        type: database_package_manifest_summary
      - id: descriptors
        type: database_descriptor_list

enums:
  section_type:
    1: file_header
    5: sys_moduleinfo
    100: cmd_journal
    101: limit_manifest
    102: cable_manifest
    103: db_version
    104: orbel_settings
    105: shared_settings
    106: otdr_launch_comp
    110: otdr_span
    200: result_summary
    300: otdr_end_1_test
    301: otdr_end_1_plot
    302: otdr_end_1_raw
    303: otdr_end_2_test
    304: otdr_end_2_plot
    305: otdr_end_2_raw
    306: patch_cord_test_end_1_test
    307: patch_cord_test_end_1_plot
    308: patch_cord_test_end_1_raw
    309: patch_cord_test_end_2_test
    310: patch_cord_test_end_2_plot
    311: patch_cord_test_end_2_raw
    312: channel_map_test
    313: channel_map_plot
    314: channel_map_raw
    315: real_time_trace_end_1_test
    316: real_time_trace_end_1_plot
    317: real_time_trace_end_1_raw
    318: real_time_trace_end_2_test
    319: real_time_trace_end_2_plot
    320: real_time_trace_end_2_raw
    321: loss_length_test
    323: power_meter_end_1_test
    324: power_meter_end_2_test
    325: image_end_1_test
    326: image_end_1_image
    327: image_end_2_test
    328: image_end_2_image
    330: otdr_bidi_test
    331: otdr_bidi_plot
    332: otdr_bidi_raw
    700: type_700
    701: type_701
    702: type_702
    900: copmeas_data
    901: copcal_data
    910: copinfo_json
    920: copmeas_json
    921: copmeas_tracecfg
  reserved_raw:
    -2147483647: not_a_number
    2147483647: plus_infinity
    -2147483646: minus_infinity
  result_type:
    0: not_set
    1: copper
    2: fiber
  status:
    0: not_set
    1: dont_show
    2: show
    4: passed
    8: pass_star
    16: pass_acceptable
    32: fail_star
    64: fail
  display_type:
    0: not_available
    1: value
    2: greater_than
    3: less_than
    4: not_applicable
  language:
    0: english
    1: spanish
    2: german
    3: italian
    4: french
    5: portuguese
    6: japanese
    7: chinese
    8: traditional_chinese
    9: korean
    10: russian
    11: czech
    12: polish
    13: swedish
    14: hungarian
    15: turkish
  locale:
    0: not_set
    1: en_us
    2: en_gb
    3: en_eu
    4: it_it
    5: fr_fr
    6: fr_ca
    7: es_es
    8: pt_pt
    9: pt_br
    10: de_de
    11: ja_jp
    12: zh_cn
    13: zh_tw
    14: ko_kr
    15: ru_ru
    16: cs_cz
    17: pl_pl
    18: sv_se
    19: hu_hu
    20: tr_tr
  date_format:
    0: mdy_slash
    1: dmy_slash
    2: dmy_dot
    3: dmy_dash
    4: ymd_slash
    5: ymd_dash
  time_format:
    0: clock_12_hr
    1: clock_24_hr
  power_down_timeout:
    0: disabled
    1: after_10_min
    2: after_20_min
    3: after_30_min
    4: after_60_min
  backlight_timeout:
    0: disabled
    1: after_5_min
    2: after_10_min
    3: after_15_min
  length_units:
    0: m
    1: ft
  numeric_format:
    0: point
    1: comma
  power_line_frequency:
    0: mains_50_hz
    1: mains_60_hz
  ip_address_source:
    0: dhcp
    1: static
