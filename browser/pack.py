#!/usr/bin/python3
"""Packs the extension: pack.py EXTENSION KEY.pem OUTPUT makes orvanta.xpi and orvanta.crx in OUTPUT.

The same input gives the same bytes. An .xpi is a zip file; a .crx is one behind a signed header
(Chromium's components/crx_file/crx3.proto), which fixes the extension's identifier. The key is one
for development, and no secret: it proves nothing but that identifier.
"""

import base64
import hashlib
import io
import json
import pathlib
import struct
import subprocess
import sys
import zipfile


def zip_of(folder):
    packed = io.BytesIO()
    with zipfile.ZipFile(packed, "w", zipfile.ZIP_DEFLATED, compresslevel=9) as archive:
        for path in sorted(path for path in folder.rglob("*") if path.is_file()):
            entry = zipfile.ZipInfo(path.relative_to(folder).as_posix(), (1980, 1, 1, 0, 0, 0))
            entry.create_system = 3  # Unix, wherever this runs.
            entry.external_attr = 0o100644 << 16
            entry.compress_type = zipfile.ZIP_DEFLATED
            archive.writestr(entry, path.read_bytes())
    return packed.getvalue()


def openssl(*arguments, data=None):
    return subprocess.run(["openssl", *arguments], input=data, check=True,
                          stdout=subprocess.PIPE, stderr=subprocess.PIPE).stdout


def field(number, content):
    """A length-delimited field of a protocol buffer."""

    def varint(value):
        encoded = bytearray()
        while value > 0x7F:
            encoded.append(value & 0x7F | 0x80)
            value >>= 7
        return bytes(encoded) + bytes([value])

    return varint(number << 3 | 2) + varint(len(content)) + content


def crx_of(archive, key, public_key):
    identifier = hashlib.sha256(public_key).digest()[:16]
    signed_data = field(1, identifier)
    covered = (b"CRX3 SignedData\0" + struct.pack("<I", len(signed_data)) + signed_data + archive)
    signature = openssl("dgst", "-sha256", "-sign", str(key), data=covered)
    header = field(2, field(1, public_key) + field(2, signature)) + field(10000, signed_data)
    return b"Cr24" + struct.pack("<II", 3, len(header)) + header + archive


def main():
    extension, key, output = (pathlib.Path(argument) for argument in sys.argv[1:])
    public_key = openssl("rsa", "-in", str(key), "-pubout", "-outform", "DER")
    manifest = json.loads((extension / "manifest.json").read_text(encoding="utf-8"))
    if base64.b64decode(manifest["key"]) != public_key:
        sys.exit(f"pack.py: the manifest's key is not that of {key}: the identifier would change")
    archive = zip_of(extension)
    output.mkdir(parents=True, exist_ok=True)
    (output / "orvanta.xpi").write_bytes(archive)
    (output / "orvanta.crx").write_bytes(crx_of(archive, key, public_key))


main()
