//! The conversions of encoding_rs, for calls from C. Each writes all of `source` into `out`, which has `room`
//! bytes or units, and returns how many it wrote. `big5` chooses between Big5 and GBK.
use encoding_rs::{Encoding, BIG5, GBK};
use std::slice::{from_raw_parts, from_raw_parts_mut};

fn encoding(big5: bool) -> &'static Encoding {
    if big5 {
        BIG5
    } else {
        GBK
    }
}

/// # Safety
/// `source` has `length` bytes, `out` room for `room` units, and they do not overlap.
#[no_mangle]
pub unsafe extern "C" fn encoding_rs_to_utf16(big5: bool, source: *const u8, length: usize, out: *mut u16, room: usize) -> usize {
    let mut decoder = encoding(big5).new_decoder_without_bom_handling();
    decoder.decode_to_utf16(from_raw_parts(source, length), from_raw_parts_mut(out, room), true).2
}

/// # Safety
/// `source` has `length` bytes, `out` room for `room`, and they do not overlap.
#[no_mangle]
pub unsafe extern "C" fn encoding_rs_to_utf8(big5: bool, source: *const u8, length: usize, out: *mut u8, room: usize) -> usize {
    let mut decoder = encoding(big5).new_decoder_without_bom_handling();
    decoder.decode_to_utf8(from_raw_parts(source, length), from_raw_parts_mut(out, room), true).2
}

/// # Safety
/// `source` has `length` bytes of valid UTF-8, `out` room for `room`, and they do not overlap.
#[no_mangle]
pub unsafe extern "C" fn encoding_rs_from_utf8(big5: bool, source: *const u8, length: usize, out: *mut u8, room: usize) -> usize {
    let mut encoder = encoding(big5).new_encoder();
    let text = std::str::from_utf8_unchecked(from_raw_parts(source, length));
    encoder.encode_from_utf8(text, from_raw_parts_mut(out, room), true).2
}

/// # Safety
/// `source` has `length` units, `out` room for `room` bytes, and they do not overlap.
#[no_mangle]
pub unsafe extern "C" fn encoding_rs_from_utf16(big5: bool, source: *const u16, length: usize, out: *mut u8, room: usize) -> usize {
    let mut encoder = encoding(big5).new_encoder();
    encoder.encode_from_utf16(from_raw_parts(source, length), from_raw_parts_mut(out, room), true).2
}
