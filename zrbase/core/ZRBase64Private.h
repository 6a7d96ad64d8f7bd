#pragma once

// The base64 alphabet shared by the encoder (ZRDataExtension) and the decoder (ZRStringExtension).
inline constexpr char ZRBase64Alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
inline constexpr char ZRBase64Pad = '=';
