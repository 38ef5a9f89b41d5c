<?xml version="1.0" encoding="UTF-8"?>
<!--
  Dorvane: a purchase order as mailed to the vendor.

  Receives one PurchaseOrderRet of a purchase order query response and writes an HTML
  fragment (the company header is put above it by the program). The vendor's address is
  VendorAddress, the message to the vendor VendorMsg; the order carries its TotalAmount.
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">

  <xsl:import href="document-parts.xslt"/>

  <!-- Mail labels the HTML as plain text/html, which is US-ASCII: every other character
       goes out as a character reference. -->
  <xsl:output method="html" indent="no" encoding="US-ASCII"/>

  <xsl:template match="/">
    <xsl:apply-templates select="(//PurchaseOrderRet)[1]"/>
  </xsl:template>

  <xsl:template match="PurchaseOrderRet">
    <table width="660" cellpadding="0" cellspacing="0" border="0" style="{$page-style}">
      <xsl:call-template name="title-block">
        <xsl:with-param name="title">PURCHASE ORDER</xsl:with-param>
        <xsl:with-param name="fields">
          <field label="P.O. No." value="{RefNumber}"/>
          <field label="Date" value="{TxnDate}" kind="date"/>
          <field label="Expected" value="{ExpectedDate}" kind="date"/>
        </xsl:with-param>
      </xsl:call-template>
      <xsl:call-template name="parties-block">
        <xsl:with-param name="first-label">Vendor</xsl:with-param>
        <xsl:with-param name="first" select="VendorAddress"/>
        <xsl:with-param name="first-name" select="VendorRef/FullName"/>
        <xsl:with-param name="second-label">Ship To</xsl:with-param>
        <xsl:with-param name="second" select="ShipAddress"/>
      </xsl:call-template>
      <xsl:call-template name="info-strip">
        <xsl:with-param name="fields">
          <field label="Terms" value="{TermsRef/FullName}"/>
          <field label="Due Date" value="{DueDate}" kind="date"/>
          <field label="Ship Via" value="{ShipMethodRef/FullName}"/>
          <field label="F.O.B." value="{FOB}"/>
        </xsl:with-param>
      </xsl:call-template>
      <xsl:call-template name="line-table"/>
      <xsl:call-template name="totals-block">
        <xsl:with-param name="rows">
          <row label="Total" strong="yes">
            <xsl:attribute name="value"><xsl:call-template name="total"/></xsl:attribute>
          </row>
        </xsl:with-param>
        <xsl:with-param name="message" select="VendorMsg"/>
      </xsl:call-template>
    </table>
  </xsl:template>

</xsl:stylesheet>
