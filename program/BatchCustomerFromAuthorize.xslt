<?xml version="1.0" encoding="UTF-8"?>
<!--
  Dorvane: the customer of one transaction of an Authorize.Net download.

  Receives one AuthNetRecord element of the converted download (one child per column, named
  after the header without blanks, "-", "/", "\" and "."). Writes the qbXML 1.1 message that
  adds the customer, without declaration and DOCTYPE:

    <QBXML><QBXMLMsgsRq onError="stopOnError"><CustomerAddRq requestID="1"><CustomerAdd>
      Name, CompanyName  Company (the import puts "First Last" into an empty one first), first
                         41 letters: the name BatchSReceiptFromAuthorize.xslt refers to
      FirstName, LastName  Customer First Name, Customer Last Name
      BillAddress        Company, Address, City, State, ZIP, Country
      ShipAddress        Ship-To Company (or the Ship-To name), Ship-To Address, City, State,
                         ZIP, Country
      Phone, Fax, Email  Phone, Fax, Email
      Contact            the first and the last name
    </CustomerAdd></CustomerAddRq></QBXMLMsgsRq></QBXML>

  Values are cut to the lengths QuickBooks takes; empty ones are left out. Every character
  that is not ASCII goes out as a character reference.
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">

  <xsl:output method="xml" encoding="US-ASCII" omit-xml-declaration="yes" indent="no"/>

  <xsl:template match="/">
    <xsl:apply-templates select="*/*[1]"/>
  </xsl:template>

  <xsl:template match="*">
    <xsl:variable name="name" select="substring(normalize-space(Company), 1, 41)"/>
    <QBXML>
      <QBXMLMsgsRq onError="stopOnError">
        <CustomerAddRq requestID="1">
          <CustomerAdd>
            <Name><xsl:value-of select="$name"/></Name>
            <CompanyName><xsl:value-of select="$name"/></CompanyName>
            <xsl:call-template name="field"><xsl:with-param name="element">FirstName</xsl:with-param><xsl:with-param name="value" select="CustomerFirstName"/><xsl:with-param name="length" select="25"/></xsl:call-template>
            <xsl:call-template name="field"><xsl:with-param name="element">LastName</xsl:with-param><xsl:with-param name="value" select="CustomerLastName"/><xsl:with-param name="length" select="25"/></xsl:call-template>
            <xsl:call-template name="address">
              <xsl:with-param name="element">BillAddress</xsl:with-param>
              <xsl:with-param name="first" select="Company"/>
              <xsl:with-param name="street" select="Address"/>
              <xsl:with-param name="city" select="City"/>
              <xsl:with-param name="state" select="State"/>
              <xsl:with-param name="zip" select="ZIP"/>
              <xsl:with-param name="country" select="Country"/>
            </xsl:call-template>
            <xsl:call-template name="address">
              <xsl:with-param name="element">ShipAddress</xsl:with-param>
              <xsl:with-param name="first">
                <xsl:choose>
                  <xsl:when test="normalize-space(ShipToCompany) != ''"><xsl:value-of select="ShipToCompany"/></xsl:when>
                  <xsl:otherwise><xsl:value-of select="concat(ShipToFirstName, ' ', ShipToLastName)"/></xsl:otherwise>
                </xsl:choose>
              </xsl:with-param>
              <xsl:with-param name="street" select="ShipToAddress"/>
              <xsl:with-param name="city" select="ShipToCity"/>
              <xsl:with-param name="state" select="ShipToState"/>
              <xsl:with-param name="zip" select="ShipToZIP"/>
              <xsl:with-param name="country" select="ShipToCountry"/>
            </xsl:call-template>
            <xsl:call-template name="field"><xsl:with-param name="element">Phone</xsl:with-param><xsl:with-param name="value" select="Phone"/><xsl:with-param name="length" select="21"/></xsl:call-template>
            <xsl:call-template name="field"><xsl:with-param name="element">Fax</xsl:with-param><xsl:with-param name="value" select="Fax"/><xsl:with-param name="length" select="21"/></xsl:call-template>
            <xsl:call-template name="field"><xsl:with-param name="element">Email</xsl:with-param><xsl:with-param name="value" select="Email"/><xsl:with-param name="length" select="99"/></xsl:call-template>
            <xsl:call-template name="field"><xsl:with-param name="element">Contact</xsl:with-param><xsl:with-param name="value" select="concat(CustomerFirstName, ' ', CustomerLastName)"/><xsl:with-param name="length" select="41"/></xsl:call-template>
          </CustomerAdd>
        </CustomerAddRq>
      </QBXMLMsgsRq>
    </QBXML>
  </xsl:template>

  <!-- An element with the value's first `length` letters; nothing for an empty value. -->
  <xsl:template name="field">
    <xsl:param name="element"/>
    <xsl:param name="value"/>
    <xsl:param name="length"/>
    <xsl:if test="normalize-space($value) != ''">
      <xsl:element name="{$element}"><xsl:value-of select="substring(normalize-space($value), 1, $length)"/></xsl:element>
    </xsl:if>
  </xsl:template>

  <!-- An address: the first line (company) and the street, then city, state, postal code and
       country; nothing when street, city and postal code are all empty. -->
  <xsl:template name="address">
    <xsl:param name="element"/>
    <xsl:param name="first"/>
    <xsl:param name="street"/>
    <xsl:param name="city"/>
    <xsl:param name="state"/>
    <xsl:param name="zip"/>
    <xsl:param name="country"/>
    <xsl:if test="normalize-space(concat($street, $city, $zip)) != ''">
      <xsl:element name="{$element}">
        <xsl:choose>
          <xsl:when test="normalize-space($first) != ''">
            <xsl:call-template name="field"><xsl:with-param name="element">Addr1</xsl:with-param><xsl:with-param name="value" select="$first"/><xsl:with-param name="length" select="41"/></xsl:call-template>
            <xsl:call-template name="field"><xsl:with-param name="element">Addr2</xsl:with-param><xsl:with-param name="value" select="$street"/><xsl:with-param name="length" select="41"/></xsl:call-template>
          </xsl:when>
          <xsl:otherwise>
            <xsl:call-template name="field"><xsl:with-param name="element">Addr1</xsl:with-param><xsl:with-param name="value" select="$street"/><xsl:with-param name="length" select="41"/></xsl:call-template>
          </xsl:otherwise>
        </xsl:choose>
        <xsl:call-template name="field"><xsl:with-param name="element">City</xsl:with-param><xsl:with-param name="value" select="$city"/><xsl:with-param name="length" select="31"/></xsl:call-template>
        <xsl:call-template name="field"><xsl:with-param name="element">State</xsl:with-param><xsl:with-param name="value" select="$state"/><xsl:with-param name="length" select="21"/></xsl:call-template>
        <xsl:call-template name="field"><xsl:with-param name="element">PostalCode</xsl:with-param><xsl:with-param name="value" select="$zip"/><xsl:with-param name="length" select="13"/></xsl:call-template>
        <xsl:call-template name="field"><xsl:with-param name="element">Country</xsl:with-param><xsl:with-param name="value" select="$country"/><xsl:with-param name="length" select="31"/></xsl:call-template>
      </xsl:element>
    </xsl:if>
  </xsl:template>

</xsl:stylesheet>
