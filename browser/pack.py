#!/usr/bin/python3
"""Packs the extension, or says who it will be.

    pack.py KEY.pem                              prints its identifier in Chromium
    pack.py KEY.pem EXTENSION VERSION OUTPUT     makes orvanta.xpi, orvanta.crx and the folder
                                                 extension in OUTPUT

The same input gives the same bytes. An .xpi is a zip file; a .crx is one behind a signed header
(Chromium's components/crx_file/crx3.proto), whose key fixes the identifier. What the key beside this
file signs says of itself that it is for development: everybody has that key.
"""

import base64
import hashlib
import io
import json
import pathlib
import shutil
import struct
import subprocess
import sys
import zipfile


DEVELOPMENT_KEY = pathlib.Path(__file__).with_name("development-key.pem")


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


def manifest_of(extension, key, public_key, version):
    manifest = json.loads((extension / "manifest.json").read_text(encoding="utf-8"))
    manifest["version"] = version
    manifest["key"] = base64.b64encode(public_key).decode()
    if key.resolve() == DEVELOPMENT_KEY.resolve():
        manifest["name"] += " (development)"
    return json.dumps(manifest, ensure_ascii=False, indent=2) + "\n"


def main():
    key = pathlib.Path(sys.argv[1])
    public_key = openssl("rsa", "-in", str(key), "-pubout", "-outform", "DER")
    if len(sys.argv) == 2:
        # The first half of the hash, with a to p for the digits.
        digits = hashlib.sha256(public_key).hexdigest()[:32]
        print(digits.translate(str.maketrans("0123456789abcdef", "abcdefghijklmnop")))
        return
    extension, version, output = pathlib.Path(sys.argv[2]), sys.argv[3], pathlib.Path(sys.argv[4])
    made = output / "extension"
    shutil.rmtree(made, ignore_errors=True)
    shutil.copytree(extension, made)
    (made / "manifest.json").write_text(manifest_of(extension, key, public_key, version),
                                        encoding="utf-8")
    archive = zip_of(made)
    (output / "orvanta.xpi").write_bytes(archive)
    (output / "orvanta.crx").write_bytes(crx_of(archive, key, public_key))


main()
