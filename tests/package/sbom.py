#!/usr/bin/env python3
"""usage: sbom.py PACKAGES
Fails unless the SBOM in each Debian package is a whole SPDX 2.3 document that names exactly what the packages depend
on, in the versions that are installed, and what is compiled into them."""

import io
import json
import pathlib
import re
import subprocess
import sys
import tarfile

# Debian's packages of each component, without the numbers in their names and Debian 13's "t64" at their ends.
COMPONENTS = {"libboost-dev": "boost", "libcurl": "curl", "libcurl-openssl-dev": "curl", "libgcc-s": "gcc",
              "libstdc++": "gcc", "libc": "glibc", "libssl": "openssl", "libssl-dev": "openssl",
              "libspdlog": "spdlog", "libspdlog-fmt": "spdlog", "libspdlog-dev": "spdlog"}
# Whose package has the version of each component.
VERSIONS = {"boost": "libboost-dev", "cli11": "libcli11-dev", "curl": "libcurl4-openssl-dev", "fmt": "libfmt-dev",
            "gcc": "libstdc++6", "glibc": "libc6", "nlohmann-json": "nlohmann-json3-dev", "openssl": "libssl-dev",
            "spdlog": "libspdlog-dev"}
# What shows that a component's headers are compiled into a file: names of its types.
MARKS = {"cli11": rb"3CLI", "fmt": rb"3fmt\dv\d", "nlohmann-json": rb"8nlohmann", "spdlog": rb"6spdlog"}


def run(*command):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE).stdout


def component(package, ours):
    """The SBOM's name of a Debian package."""
    bare = re.sub(r"\d[\d.]*(t64$)?", "", package)
    return package if package in ours else COMPONENTS.get(bare, f"unknown: {package}")


def dependencies(package_file, ours):
    listed = run("dpkg-deb", "--field", package_file, "Depends").decode()
    return {component(re.match(r"\S+", each.strip()).group(0), ours) for each in listed.split(",")}


def related(sbom, name, kind):
    return {relation["relatedSpdxElement"].removeprefix("SPDXRef-") for relation in sbom["relationships"]
            if relation["spdxElementId"] == f"SPDXRef-{name}" and relation["relationshipType"] == kind}


def content(package_file):
    """The bytes of each file in a package, by its path."""
    with tarfile.open(fileobj=io.BytesIO(run("dpkg-deb", "--fsys-tarfile", package_file))) as tar:
        return {member.name: tar.extractfile(member).read() for member in tar if member.isfile()}


def form(sbom):
    """What a reader of SPDX 2.3 would refuse."""
    wrong = [f"the SBOM lacks {field}" for field in ("SPDXID", "name", "documentNamespace", "creationInfo")
             if not sbom.get(field)]
    if (sbom.get("spdxVersion"), sbom.get("dataLicense")) != ("SPDX-2.3", "CC0-1.0"):
        wrong.append("the SBOM is not SPDX 2.3")
    if not re.fullmatch(r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ", sbom["creationInfo"]["created"]):
        wrong.append(f"the SBOM was created at {sbom['creationInfo']['created']}")
    identifiers = [package["SPDXID"] for package in sbom["packages"]] + [sbom["SPDXID"]]
    wrong += [f"the SBOM has two {each}" for each in set(identifiers) if identifiers.count(each) > 1]
    wrong += [f"the SBOM relates {each}, which it does not describe" for relation in sbom["relationships"]
              for each in (relation["spdxElementId"], relation["relatedSpdxElement"]) if each not in identifiers]
    return wrong + [f"{package['SPDXID']} lacks {field}" for package in sbom["packages"]
                    for field in ("name", "versionInfo", "downloadLocation", "licenseDeclared") if not package.get(field)]


def versions(sbom, ours, version):
    """Where the SBOM has another version than the machine that built the packages."""
    wrong = []
    for package in sbom["packages"]:
        name, told = package["name"], package["versionInfo"]
        if name in ours:
            installed = version
        else:
            installed = run("dpkg-query", "--show", "--showformat=${Version}", VERSIONS[name]).decode()
        # Boost's package counts its third number elsewhere, and fmt 10.1.1 calls itself 10.1.0.
        upstream = re.sub(r"^\d+:|[-+~].*$", "", installed)
        if name == "fmt":
            upstream, told = (re.sub(r"\.\d+$", "", each) for each in (upstream, told))
        if told != upstream and not told.startswith(upstream + ".") and not upstream.startswith(told + "."):
            wrong.append(f"the SBOM has {name} {told}, but {installed} is installed")
    return wrong


def compare(name, package_file, sbom, ours):
    """The SBOM's relations of one package, and the package."""
    wrong = []
    depends, told = dependencies(package_file, ours), related(sbom, name, "DEPENDS_ON")
    if depends != told:
        wrong.append(f"{name} depends on {sorted(depends)}, but its SBOM names {sorted(told)}")
    files = b"".join(content(package_file).values())
    marked = {each for each, mark in MARKS.items() if re.search(mark, files)}
    static = related(sbom, name, "STATIC_LINK") - {"boost"}
    if marked != static:
        wrong.append(f"{sorted(marked)} are compiled into {name}, but its SBOM names {sorted(static)}")
    return wrong


def main(folder):
    files = {run("dpkg-deb", "--field", file, "Package").decode().strip(): file
             for file in sorted(pathlib.Path(folder).glob("*.deb"))}
    texts = {name: content(file).get(f"./usr/share/doc/{name}/sftpclient.spdx.json") for name, file in files.items()}
    wrong = [f"{name} has no SBOM" for name, text in texts.items() if not text]
    wrong += ["the packages' SBOMs differ"] if len(set(texts.values())) != 1 else []
    if not wrong and files:
        sbom = json.loads(next(iter(texts.values())))
        version = run("dpkg-deb", "--field", next(iter(files.values())), "Version").decode().strip()
        described = related(sbom, "DOCUMENT", "DESCRIBES")
        wrong += [f"the SBOM describes {sorted(described)}"] if described != set(files) else []
        wrong += form(sbom) + versions(sbom, set(files), version)
        wrong += [each for name, file in files.items() for each in compare(name, file, sbom, set(files))]
    print("\n".join(wrong or [f"The SBOM agrees with {len(files)} packages."]))
    return 1 if wrong or not files else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
